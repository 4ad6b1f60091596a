// quill.exe as it is started: by hand, by an installer, by the automation runtime.
#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

std::wstring Program()
{
    const std::wstring& here = ThisApartment().programPath;
    return here.substr(0, here.find_last_of(L'\\') + 1) + QUILL_PROGRAM;
}

// A started quill.exe; what a test leaves running is ended.
class Process {
public:
    // `commandLine` is what follows the program's name and a blank, to the letter.
    explicit Process(const std::wstring& commandLine)
    {
        std::wstring whole = L'"' + Program() + L"\" " + commandLine;
        if (commandLine.empty()) whole.pop_back();
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (!CreateProcessW(Program().c_str(), whole.data(), nullptr, nullptr, FALSE, 0, nullptr,
                            nullptr, &startup, &process))
            RaiseLastError();
        CloseHandle(process.hThread);
        process_.reset(process.hProcess);
    }
    ~Process()
    {
        if (IsRunning()) TerminateProcess(process_.get(), 1);
    }

    bool IsRunning() const { return WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT; }

    // The exit code, or STILL_ACTIVE when the process does not end.
    DWORD ExitCode() const
    {
        DWORD code = STILL_ACTIVE;
        WaitForSingleObject(process_.get(), 20'000);
        GetExitCodeProcess(process_.get(), &code);
        return code;
    }

private:
    Event process_;
};

bool IsRegistered()
{
    CLSID id;
    return SUCCEEDED(CLSIDFromProgID(L"Quill.Profile", &id));
}

class StartModes : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(Process(L"/unregserver").ExitCode(), 0u); }
    static void TearDownTestSuite() { Process(L"/unregserver").ExitCode(); }
};

TEST_F(StartModes, HelpBox)
{
    const Process help(L"/?");
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
    EXPECT_EQ(help.ExitCode(), 0u);
    EXPECT_FALSE(IsRegistered());
}

// A box would keep the process from ending.
TEST_F(StartModes, NothingHappensOnAnyOtherCommandLine)
{
    for (const wchar_t* commandLine : {L"/? ", L"-?", L"/h", L"/H", L"?", L"\"/?\"", L"/? /?",
                                       L"/regserver /unregserver", L"regserver"}) {
        EXPECT_EQ(Process(commandLine).ExitCode(), 0u) << Narrow(commandLine);
        EXPECT_FALSE(IsRegistered()) << Narrow(commandLine);
    }
}

TEST_F(StartModes, RegisterAndUnregister)
{
    const struct {
        const wchar_t* commandLine;
        bool registered;
    } cases[] = {
        {L"/regserver", true},
        {L"/regserver", true},
        {L"/unregserver", false},
        {L"/unregserver", false},
        {L"", true},
        {L"-UnregServer", false},
        {L"-REGSERVER", true},
        {L"/unregserver", false},
    };
    for (const auto& [commandLine, registered] : cases) {
        EXPECT_EQ(Process(commandLine).ExitCode(), 0u) << Narrow(commandLine);
        EXPECT_EQ(IsRegistered(), registered) << Narrow(commandLine);
    }
}

// The registry knows no server here, so it is this process that serves, or none.
TEST_F(StartModes, TheAutomationRuntimeIsServedWhateverElseIsAsked)
{
    ASSERT_FALSE(IsRegistered());
    const Process server(L"/? -Embedding");
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

    // It ends by itself when its last object has gone.
    factory.Reset();
    EXPECT_TRUE(server.IsRunning());
    object.Reset();
    profile.Release();
    EXPECT_EQ(server.ExitCode(), 0u);
}

} // namespace
} // namespace quill::test
