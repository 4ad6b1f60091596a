#include "core/Security.h"

#include <sddl.h>

#include <vector>

#include "core/AutomationError.h"

namespace quill {

namespace {

// A part of the process's token, as the platform lays it out in memory.
std::vector<BYTE> TokenPart(TOKEN_INFORMATION_CLASS part)
{
    Handle token;
    CheckLast(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, Into(token)));
    DWORD size = 0;
    GetTokenInformation(token.get(), part, nullptr, 0, &size);
    std::vector<BYTE> data(size);
    CheckLast(GetTokenInformation(token.get(), part, data.data(), size, &size));
    return data;
}

std::wstring SidText(PSID sid)
{
    Owned<LPWSTR, LocalFree> text;
    CheckLast(ConvertSidToStringSidW(sid, Into(text)));
    return text.get();
}

PSECURITY_DESCRIPTOR MakeRights()
{
    const std::vector<BYTE> user = TokenPart(TokenUser);
    const std::vector<BYTE> label = TokenPart(TokenIntegrityLevel);
    const std::wstring sid = SidText(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
    const std::wstring integrity =
        SidText(reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(label.data())->Label.Sid);
    // 3: COM_RIGHTS_EXECUTE and COM_RIGHTS_EXECUTE_LOCAL. NX: no execute from below.
    const std::wstring text = L"O:" + sid + L"G:" + sid + L"D:(A;;0x3;;;" + sid +
                              L")(A;;0x3;;;SY)(A;;0x3;;;BA)S:(ML;;NX;;;" + integrity + L")";
    PSECURITY_DESCRIPTOR rights = nullptr;
    CheckLast(ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                                   &rights, nullptr));
    return rights;
}

} // namespace

AccessRights::AccessRights() : rights_(MakeRights())
{
    PSID sid = nullptr;
    PACL list = nullptr;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    CheckLast(InitializeSecurityDescriptor(&absolute_, SECURITY_DESCRIPTOR_REVISION));
    CheckLast(GetSecurityDescriptorOwner(rights_.get(), &sid, &defaulted) &&
              SetSecurityDescriptorOwner(&absolute_, sid, FALSE));
    CheckLast(GetSecurityDescriptorGroup(rights_.get(), &sid, &defaulted) &&
              SetSecurityDescriptorGroup(&absolute_, sid, FALSE));
    CheckLast(GetSecurityDescriptorDacl(rights_.get(), &present, &list, &defaulted) &&
              SetSecurityDescriptorDacl(&absolute_, present, list, FALSE));
    CheckLast(GetSecurityDescriptorSacl(rights_.get(), &present, &list, &defaulted) &&
              SetSecurityDescriptorSacl(&absolute_, present, list, FALSE));
}

} // namespace quill
