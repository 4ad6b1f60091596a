#include "core/Security.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

constexpr DWORD kLocal = 1 | 2; // COM_RIGHTS_EXECUTE, COM_RIGHTS_EXECUTE_LOCAL
constexpr DWORD kRemote = 4;    // COM_RIGHTS_EXECUTE_REMOTE

// What the platform grants this process.
bool MayCall(DWORD rights)
{
    AccessRights server;
    HANDLE token = nullptr;
    GENERIC_MAPPING mapping{};
    PRIVILEGE_SET privileges{};
    DWORD size = sizeof privileges;
    DWORD granted = 0;
    BOOL allowed = FALSE;
    EXPECT_TRUE(ImpersonateSelf(SecurityImpersonation) &&
                OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token));
    const Event owner(token);
    RevertToSelf();
    EXPECT_TRUE(AccessCheck(server.Descriptor(), token, rights, &mapping, &privileges, &size,
                            &granted, &allowed));
    return allowed;
}

TEST(AccessRights, AdmitTheUserFromThisComputerAndNobodyElse)
{
    EXPECT_TRUE(MayCall(kLocal));
    EXPECT_FALSE(MayCall(kLocal | kRemote));

    AccessRights rights;
    PSID owner = nullptr;
    PACL list = nullptr;
    PACL label = nullptr;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ASSERT_TRUE(GetSecurityDescriptorOwner(rights.Descriptor(), &owner, &defaulted));
    ASSERT_TRUE(GetSecurityDescriptorDacl(rights.Descriptor(), &present, &list, &defaulted));
    ASSERT_TRUE(IsValidSid(owner) && present && list) << "no list admits everybody";
    ASSERT_EQ(list->AceCount, 3);
    for (DWORD index = 0; index < list->AceCount; ++index) {
        ACCESS_ALLOWED_ACE* entry = nullptr;
        ASSERT_TRUE(GetAce(list, index, reinterpret_cast<void**>(&entry)));
        PSID admitted = &entry->SidStart;
        EXPECT_EQ(entry->Mask, kLocal);
        EXPECT_TRUE(EqualSid(admitted, owner) || IsWellKnownSid(admitted, WinLocalSystemSid) ||
                    IsWellKnownSid(admitted, WinBuiltinAdministratorsSid));
    }
    SYSTEM_MANDATORY_LABEL_ACE* entry = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorSacl(rights.Descriptor(), &present, &label, &defaulted));
    ASSERT_TRUE(present && label && GetAce(label, 0, reinterpret_cast<void**>(&entry)));
    EXPECT_EQ(entry->Header.AceType, SYSTEM_MANDATORY_LABEL_ACE_TYPE);
    EXPECT_EQ(entry->Mask, DWORD{SYSTEM_MANDATORY_LABEL_NO_EXECUTE_UP});
}

} // namespace
} // namespace quill::test
