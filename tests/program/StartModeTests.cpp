// quill.exe as it is started: by hand, by an installer, by the automation runtime.
#include <gtest/gtest.h>

#include "support/Remote.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

constexpr DWORD kDeadline = 20'000; // milliseconds

DWORD ExitCodeOf(const wchar_t* commandLine)
{
    return Program(L"quill.exe", commandLine).Wait(kDeadline);
}

bool IsRegistered()
{
    CLSID id;
    return SUCCEEDED(CLSIDFromProgID(L"Quill.Profile", &id));
}

class StartModes : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(ExitCodeOf(L"/unregserver"), 0u); }
    static void TearDownTestSuite() { ExitCodeOf(L"/unregserver"); }
};

TEST_F(StartModes, HelpBox)
{
    const Program help(L"quill.exe", L"/?");
    Desk desk;
    const HWND ok = desk.Control(L"QUILL by OBRA", L"Button", L"OK");
    const HWND box = GetAncestor(ok, GA_ROOT);
    EXPECT_EQ(desk.Controls(box, L"Button").size(), 1u);
    const HWND text = desk.Control(L"QUILL by OBRA", L"Static",
                                   L"quill.exe command line arguments:\r\n\r\n"
                                   L"/regserver\r\n"
                                   L"\tregister this component (default arg.)\r\n"
                                   L"/unregserver\r\n"
                                   L"\tunregister this component\r\n\r\n");
    EXPECT_TRUE(text);
    desk.Click(ok);
    EXPECT_EQ(help.Wait(kDeadline), 0u);
    EXPECT_FALSE(IsRegistered());
}

// A box would keep the process from ending.
TEST_F(StartModes, NothingHappensOnAnyOtherCommandLine)
{
    for (const wchar_t* commandLine : {L"/? ", L"-?", L"/h", L"/H", L"?", L"\"/?\"", L"/? /?",
                                       L"/regserver /unregserver", L"regserver"}) {
        EXPECT_EQ(ExitCodeOf(commandLine), 0u) << Narrow(commandLine);
        EXPECT_FALSE(IsRegistered()) << Narrow(commandLine);
    }
}

TEST_F(StartModes, RegisterAndUnregister)
{
    const std::pair<const wchar_t*, bool> cases[] = {{L"/regserver", true},
                                                     {L"/regserver", true},
                                                     {L"/unregserver", false},
                                                     {L"/unregserver", false},
                                                     {L"", true},
                                                     {L"-UnregServer", false},
                                                     {L"-REGSERVER", true},
                                                     {L"/unregserver", false}};
    for (const auto& [commandLine, registered] : cases) {
        EXPECT_EQ(ExitCodeOf(commandLine), 0u) << Narrow(commandLine);
        EXPECT_EQ(IsRegistered(), registered) << Narrow(commandLine);
    }
}

// The registry knows no server here, so it is this process that serves, or none.
TEST_F(StartModes, TheAutomationRuntimeIsServedWhateverElseIsAsked)
{
    ASSERT_FALSE(IsRegistered());
    const Program server(L"quill.exe", L"/? -Embedding");
    ComPtr<IClassFactory> factory;
    Desk desk;
    desk.WaitFor(L"the class object", [&] {
        return SUCCEEDED(
            CoGetClassObject(CLSID_Profile, CLSCTX_LOCAL_SERVER, nullptr, IID_PPV_ARGS(&factory)));
    });
    ComPtr<IDispatch> object;
    ASSERT_HRESULT_SUCCEEDED(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
    ScriptObject profile(object.Get());
    EXPECT_EQ(profile.Get(L"ErrorLevel"), 1);
    EXPECT_EQ(ErrorOf([&] { profile.Call(L"GetSectionNames"); }),
              (ScriptError{0x80040340, L"Quill.Profile", L"No Profile defined."}));
    EXPECT_EQ(server.Wait(0), DWORD{STILL_ACTIVE});
    SendMessageW(FindWindowW(L"quill.Server", nullptr), WM_ENDSESSION, TRUE, 0);
    EXPECT_EQ(server.Wait(kDeadline), 0u);
}

} // namespace
} // namespace quill::test
