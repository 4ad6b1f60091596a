// One running server and its clients: many at once, killed ones, and the end of the session. The
// tests share a server, which the last one ends.
#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <future>

#include "support/Remote.h"
#include "support/Robot.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

// A class whose calls wait for the user, or for something else. Noise waits too, but not where
// sounds end at once; its own tests have it wait for a sound of theirs.
struct Waiting {
    const wchar_t* name;
    const wchar_t* button; // ends its wait; null: another call does
    void (*wait)(ScriptObject& object, const std::wstring& caption);
};

// Another script's answer is an error.
void WantOwn(const Value& answer, const std::wstring& caption)
{
    if (answer.Text() != caption) throw ScriptError{1, {}, {}};
}

const Waiting kWaiting[] = {
    {L"List", L"OK",
     [](ScriptObject& list, const std::wstring& caption) {
         WantOwn(list.Call(L"Selection", caption + L"\r\nother", 0, caption), caption);
     }},
    {L"CheckList", L"OK",
     [](ScriptObject& list, const std::wstring& caption) {
         list.Call(L"Selection", L"a\r\nb", 0, caption);
     }},
    {L"DriveList", L"OK",
     [](ScriptObject& list, const std::wstring& caption) {
         list.Call(L"Selection", L"", caption);
     }},
    {L"MInputBox", L"OK",
     [](ScriptObject& box, const std::wstring& caption) {
         WantOwn(box.Call(L"InputS", L"prompt", caption, caption), caption);
     }},
    {L"DTPick", L"OK",
     [](ScriptObject& picker, const std::wstring& caption) {
         Variant date;
         picker.Put(L"Title", caption);
         picker.Call(L"Selection", &date);
     }},
    {L"MessageBox", L"OK",
     [](ScriptObject& box, const std::wstring& caption) {
         box.Call(L"Show", L"text", 0, caption);
     }},
    {L"TaskDialog", L"OK",
     [](ScriptObject& dialog, const std::wstring& caption) {
         dialog.Call(L"Show", L"text", 1, caption);
     }},
    {L"FileSelection", L"Cancel",
     [](ScriptObject& files, const std::wstring& caption) {
         files.Put(L"DlgTitle", caption);
         files.Call(L"Dialog", short{0});
     }},
    {L"Clock", nullptr,
     [](ScriptObject& clock, const std::wstring&) {
         clock.Call(L"SetTimer", 1'000'000);
         clock.Call(L"Wait");
     }},
};
const Waiting& kList = kWaiting[0];

// A script that makes an object and waits in its call.
class Script {
public:
    Script(const Waiting& kind, std::wstring caption)
        : kind_(kind), caption_(std::move(caption)), object_(Remote(kind.name)),
          rightly_(std::async(std::launch::async, [this] {
              CoInitializeEx(nullptr, COINIT_MULTITHREADED);
              const bool done = !ErrorOf([this] { kind_.wait(object_, caption_); }).number;
              CoUninitialize();
              return done;
          }))
    {
    }

    ~Script()
    {
        if (!Returned()) Answer();
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    void WaitUntilOpen(Desk& desk)
    {
        if (kind_.button)
            button_ = desk.Control(caption_.c_str(), L"Button", kind_.button);
        else
            desk.WaitFor(L"the clock", [this] { return object_.Get(L"Running").Truth(); });
    }
    void Answer()
    {
        if (button_)
            PostMessageW(GetParent(button_), WM_COMMAND,
                         MAKEWPARAM(GetDlgCtrlID(button_), BN_CLICKED),
                         reinterpret_cast<LPARAM>(button_));
        else
            object_.Call(L"RemoveTimer");
    }
    bool IsServed()
    {
        UINT count = 0;
        return SUCCEEDED(object_.Dispatch()->GetTypeInfoCount(&count)) && count == 1;
    }
    bool Returned(int milliseconds = 0) const
    {
        return rightly_.wait_for(std::chrono::milliseconds(milliseconds)) ==
               std::future_status::ready;
    }
    bool ReturnedRightly() { return Returned(5'000) && rightly_.get(); }

private:
    const Waiting& kind_;
    const std::wstring caption_;
    ScriptObject object_;
    HWND button_ = nullptr;
    std::shared_future<bool> rightly_;
};

class RunningServer : public testing::Test {
protected:
    // Scripts of one test share objects among threads.
    static void SetUpTestSuite()
    {
        CoUninitialize();
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    }
    static void TearDownTestSuite()
    {
        CoUninitialize();
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    }

    // The next client is served.
    static void ExpectServer() { EXPECT_EQ(Remote(L"Profile").Get(L"ErrorLevel"), 1); }

    Desk desk_;
};

TEST_F(RunningServer, ScriptsThatWaitDoNotHoldEachOtherUp)
{
    for (const Waiting& kind : kWaiting) {
        SCOPED_TRACE(Narrow(kind.name));
        Script first(kind, L"first");
        first.WaitUntilOpen(desk_);
        Script second(kind, L"second");
        second.WaitUntilOpen(desk_);
        Script list(kList, L"list");
        list.WaitUntilOpen(desk_);
        ExpectServer();
        EXPECT_TRUE(first.IsServed() && second.IsServed());

        // Neither the one that came last comes back first, nor the one that came first.
        second.Answer();
        EXPECT_TRUE(second.ReturnedRightly());
        EXPECT_FALSE(first.Returned() || list.Returned());
        first.Answer();
        EXPECT_TRUE(first.ReturnedRightly());
        EXPECT_FALSE(list.Returned());
        list.Answer();
        EXPECT_TRUE(list.ReturnedRightly());
    }
}

// The menu is no call of a script: whoever clicks the icon opens it.
TEST_F(RunningServer, AnOpenMenuHoldsNobodyUp)
{
    ScriptObject notice = Remote(L"Notice");
    notice.Put(L"IconID", 32516);
    notice.Put(L"ContextMenu", ScriptArray(L"one", L"two"));
    ASSERT_TRUE(notice.Call(L"Add"));
    const HWND icon = FindWindowW(L"frmNoteMsg", nullptr);
    PostMessageW(icon, 0x8008, MAKEWPARAM(300, 300), MAKELPARAM(WM_CONTEXTMENU, 0));
    const HWND menu = desk_.Window(nullptr, L"#32768");
    ScriptObject clock = Remote(L"Clock");
    clock.Call(L"SetTimer", 50);
    desk_.WaitFor(L"the clock to ring", [&] { return !clock.Get(L"Running"); });
    EXPECT_EQ(notice.Get(L"TrayClicked"), 0);
    EXPECT_TRUE(IsWindowVisible(menu));
    notice.Call(L"Remove");
    desk_.WaitUntilGone(menu);
}

// There are 32 threads for waits: dialog 32, counted from 0, is nested in number 0.
TEST_F(RunningServer, FortyDialogsReturnToTheirOwnScripts)
{
    constexpr int kCount = 40;
    constexpr int kThreads = 32;
    std::deque<Script> scripts;
    for (int number = 0; number < kCount; ++number)
        scripts.emplace_back(kList, L"dialog " + std::to_wstring(number)).WaitUntilOpen(desk_);

    scripts[0].Answer();
    scripts[kThreads - 1].Answer();
    EXPECT_TRUE(scripts[kThreads - 1].ReturnedRightly());
    EXPECT_FALSE(scripts[0].Returned()) << "the one on top of it is still open";
    scripts[kThreads].Answer();
    EXPECT_TRUE(scripts[kThreads].ReturnedRightly());
    EXPECT_TRUE(scripts[0].ReturnedRightly());

    for (int number = kCount - 1; number > 0; --number) {
        if (number == kThreads || number == kThreads - 1) continue;
        scripts[number].Answer();
        EXPECT_TRUE(scripts[number].ReturnedRightly()) << number;
    }
}

// The platform counts the references of killed clients down, or, as here, never does: the server
// has to do well without.
TEST_F(RunningServer, SurvivesKilledClients)
{
    for (const wchar_t* what :
         {L"objects", L"list", L"message", L"icon", L"windows", L"clock", L"event"}) {
        SCOPED_TRACE(Narrow(what));
        const Client client(what);
        ASSERT_TRUE(client.Ready());
        if (client.Wait(0) != STILL_ACTIVE) ADD_FAILURE() << "the client failed";
        if (*what == L'l' || *what == L'm') desk_.Control(L"killed", L"Button", L"OK");
        client.Kill();

        Script other(kList, L"other");
        other.WaitUntilOpen(desk_);
        ExpectServer();
        other.Answer();
        EXPECT_TRUE(other.ReturnedRightly());
    }
}

Event ServerProcess()
{
    const auto id = static_cast<DWORD>(Remote(L"Me").Get(L"ProcessID").Number());
    Event process(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id));
    if (!process) throw std::runtime_error("the server's process could not be opened");
    return process;
}

DWORD ExitCode(const Event& process)
{
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(process.get(), 10'000);
    GetExitCodeProcess(process.get(), &code);
    return code;
}

TEST_F(RunningServer, IsEndedByTheNextProgramWhenItHangs)
{
    const Event process = ServerProcess();
    const DWORD id = GetWindowThreadProcessId(FindWindowW(L"quill.Server", nullptr), nullptr);
    const Event thread(OpenThread(THREAD_SUSPEND_RESUME, FALSE, id));
    ASSERT_NE(SuspendThread(thread.get()), static_cast<DWORD>(-1));
    EndHungServers();
    EXPECT_EQ(ExitCode(process), 1u);
    ExpectServer();
}

TEST_F(RunningServer, EndsWithTheSession)
{
    const Event process = ServerProcess();
    std::deque<Script> scripts;
    for (const Waiting& kind : kWaiting)
        scripts.emplace_back(kind, L"open " + std::wstring(kind.name)).WaitUntilOpen(desk_);
    ScriptObject notice = Remote(L"Notice");
    notice.Put(L"IconID", 32516);
    notice.Put(L"ContextMenu", ScriptArray(L"one"));
    ASSERT_TRUE(notice.Call(L"Add"));
    const auto icon = [&] {
        return FindWindowExW(FindWindowW(nullptr, L"Wine System Tray"), nullptr,
                             L"__winex11_tray_icon", nullptr);
    };
    EXPECT_TRUE(icon());
    const TemporaryFolder folder;
    ScriptObject binary(Remote(L"File").Call(L"OpenBinary", folder.Write(L"data", "")).Object());
    ASSERT_TRUE(binary.Call(L"BWrite", L"written"));

    // As the system goes about it: all windows are asked, then all are told.
    std::vector<HWND> windows;
    HWND next = nullptr;
    while ((next = FindWindowExW(nullptr, next, nullptr, nullptr)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(next, &owner);
        if (owner == GetProcessId(process.get())) windows.push_back(next);
    }
    const auto send = [&](UINT message, WPARAM wParam) {
        DWORD_PTR all = TRUE;
        for (const HWND window : windows) {
            DWORD_PTR answer = TRUE;
            SendMessageTimeoutW(window, message, wParam, 0, SMTO_NORMAL, 10'000, &answer);
            all = all && answer;
        }
        return all != FALSE;
    };
    PostMessageW(FindWindowW(L"quill.Server", nullptr), WM_CLOSE, 0, 0); // means others
    EXPECT_TRUE(send(WM_QUERYENDSESSION, 0));
    send(WM_ENDSESSION, FALSE); // another program has objected
    for (const Script& script : scripts)
        EXPECT_FALSE(script.Returned());

    send(WM_ENDSESSION, TRUE);
    EXPECT_FALSE(icon());
    for (const HWND window : windows)
        EXPECT_FALSE(IsWindow(window) && IsWindowVisible(window)) << Narrow(Desk::ClassOf(window));
    for (const Script& script : scripts)
        EXPECT_TRUE(script.Returned(2'000));
    EXPECT_EQ(ExitCode(process), 0u) << "a thread did not end";
    std::ifstream written(std::filesystem::path(folder.Path(L"data")), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), "written");

    ExpectServer();
}

// The system would end it after five seconds.
TEST_F(RunningServer, EndsWithTheSessionThoughAClientDoesNotAnswer)
{
    const Event process = ServerProcess();
    const Client client(L"event");
    ASSERT_TRUE(client.Ready());
    const ULONGLONG begin = GetTickCount64();
    SendMessageTimeoutW(FindWindowW(L"quill.Server", nullptr), WM_ENDSESSION, TRUE, 0, SMTO_NORMAL,
                        10'000, nullptr);
    EXPECT_EQ(ExitCode(process), 1u);
    EXPECT_LT(GetTickCount64() - begin, 5'000u);
    ExpectServer();
}

} // namespace
} // namespace quill::test
