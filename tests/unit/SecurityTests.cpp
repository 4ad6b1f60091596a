#include "core/Security.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

constexpr DWORD kLocal = 1 | 2; // COM_RIGHTS_EXECUTE, COM_RIGHTS_EXECUTE_LOCAL
constexpr DWORD kRemote = 4;    // COM_RIGHTS_EXECUTE_REMOTE

// What the platform grants this process, or one of its restricted descendants.
bool MayCall(HANDLE token, DWORD rights)
{
    AccessRights server;
    GENERIC_MAPPING mapping{};
    PRIVILEGE_SET privileges{};
    DWORD size = sizeof privileges;
    DWORD granted = 0;
    BOOL allowed = FALSE;
    EXPECT_TRUE(AccessCheck(server.Descriptor(), token, rights, &mapping, &privileges, &size,
                            &granted, &allowed))
        << GetLastError();
    return allowed;
}

TEST(AccessRights, AdmitTheUserFromThisComputerOnly)
{
    HANDLE own = nullptr;
    HANDLE copy = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &own));
    const Event ownOwner(own);
    ASSERT_TRUE(DuplicateToken(own, SecurityImpersonation, &copy));
    const Event copyOwner(copy);
    EXPECT_TRUE(MayCall(copy, kLocal));
    EXPECT_FALSE(MayCall(copy, kLocal | kRemote));
}

// The list names whom it admits, and nobody else; every server says who its owner is.
TEST(AccessRights, AdmitNobodyElse)
{
    AccessRights rights;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    ASSERT_TRUE(GetSecurityDescriptorControl(rights.Descriptor(), &control, &revision));
    EXPECT_FALSE(control & SE_SELF_RELATIVE);
    PSID owner = nullptr;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ASSERT_TRUE(GetSecurityDescriptorOwner(rights.Descriptor(), &owner, &defaulted));
    ASSERT_TRUE(IsValidSid(owner));
    PACL list = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorDacl(rights.Descriptor(), &present, &list, &defaulted));
    ASSERT_TRUE(present && list) << "no list admits everybody";
    ASSERT_EQ(list->AceCount, 3);
    for (DWORD index = 0; index < list->AceCount; ++index) {
        ACCESS_ALLOWED_ACE* entry = nullptr;
        ASSERT_TRUE(GetAce(list, index, reinterpret_cast<void**>(&entry)));
        PSID admitted = &entry->SidStart;
        EXPECT_EQ(entry->Mask, kLocal);
        EXPECT_TRUE(EqualSid(admitted, owner) || IsWellKnownSid(admitted, WinLocalSystemSid) ||
                    IsWellKnownSid(admitted, WinBuiltinAdministratorsSid));
    }
    PACL label = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorSacl(rights.Descriptor(), &present, &label, &defaulted));
    ASSERT_TRUE(present && label);
    SYSTEM_MANDATORY_LABEL_ACE* entry = nullptr;
    ASSERT_TRUE(GetAce(label, 0, reinterpret_cast<void**>(&entry)));
    EXPECT_EQ(entry->Header.AceType, SYSTEM_MANDATORY_LABEL_ACE_TYPE);
    EXPECT_EQ(entry->Mask, DWORD{SYSTEM_MANDATORY_LABEL_NO_EXECUTE_UP});
}

} // namespace
} // namespace quill::test
