// quill.exe as it is started: by hand, by an installer, by the automation runtime.
#include <gtest/gtest.h>

#include "support/Remote.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

constexpr DWORD kDeadline = 20'000; // milliseconds

bool IsRegistered()
{
    CLSID id;
    return SUCCEEDED(CLSIDFromProgID(L"Quill.Profile", &id));
}

// Below a volatile key, only other volatile ones can be made.
TEST(StartModes, WhatCannotBeWrittenIsTheExitCode)
{
    RegistryKey key;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\Quill.Profile", 0, nullptr,
                    REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, Into(key), nullptr);
    EXPECT_EQ(Program(L"quill.exe", L"/regserver").Wait(kDeadline),
              static_cast<DWORD>(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE)));
    EXPECT_EQ(Program(L"quill.exe", L"/unregserver").Wait(kDeadline), 0u);
    EXPECT_FALSE(IsRegistered());
}

// The box keeps the process from ending; whatever else is said but that switch does not.
TEST(StartModes, HelpBox)
{
    for (const wchar_t* line : {L"/? ", L"\"/?\"", L"--?"})
        EXPECT_EQ(Program(L"quill.exe", line).Wait(kDeadline), 0u) << Narrow(line);
    const Program help(L"quill.exe", L"/?");
    Desk desk;
    const HWND ok = desk.Control(L"QUILL by OBRA", L"Button", L"OK");
    EXPECT_FALSE(FindWindowExW(GetAncestor(ok, GA_ROOT), ok, L"Button", nullptr));
    desk.Control(L"QUILL by OBRA", L"Static",
                 L"quill.exe command line arguments:\r\n\r\n"
                 L"/regserver\r\n\tregister this component (default arg.)\r\n"
                 L"/unregserver\r\n\tunregister this component\r\n\r\n");
    desk.Click(ok);
    EXPECT_EQ(help.Wait(kDeadline), 0u);
    EXPECT_FALSE(IsRegistered());
}

// The registry knows no server here, so it is this process that serves, or none.
TEST(StartModes, TheAutomationRuntimeIsServedWhateverElseIsAsked)
{
    for (const wchar_t* commandLine : {L"/? -Embedding", L"/Automation /regserver"}) {
        const Program server(L"quill.exe", commandLine);
        ComPtr<IClassFactory> factory;
        Desk().WaitFor(L"the class object", [&] {
            return SUCCEEDED(CoGetClassObject(CLSID_Profile, CLSCTX_LOCAL_SERVER, nullptr,
                                              IID_PPV_ARGS(&factory)));
        });
        ComPtr<IDispatch> object;
        ASSERT_HRESULT_SUCCEEDED(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
        EXPECT_EQ(server.Wait(0), DWORD{STILL_ACTIVE});
        SendMessageW(FindWindowW(L"quill.Server", nullptr), WM_ENDSESSION, TRUE, 0);
        EXPECT_EQ(server.Wait(kDeadline), 0u);
        EXPECT_FALSE(IsRegistered());
    }
}

} // namespace
} // namespace quill::test
