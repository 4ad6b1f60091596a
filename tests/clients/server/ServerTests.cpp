// One running server and its clients: many at once, killed ones, and the end of the session. The
// tests share a server, which the last one ends.
#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <future>

#include "support/Engine.h"
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
    // Of the object o; c is the caption. Another script's answer is an error.
    const wchar_t* statement;
};

const Waiting kWaiting[] = {
    {L"List", L"OK", L"If o.Selection(c & vbCrLf & 1, 0, c) <> c Then Err.Raise 5"},
    {L"CheckList", L"OK", L"o.Selection \"a\", 0, c"},
    {L"DriveList", L"OK", L"o.Selection \"\", c"},
    {L"MInputBox", L"OK", L"If o.InputS(\"prompt\", c, c) <> c Then Err.Raise 5"},
    {L"DTPick", L"OK", L"o.Title = c : o.Selection date_"},
    {L"MessageBox", L"OK", L"o.Show \"text\", 0, c"},
    {L"TaskDialog", L"OK", L"o.Show \"text\", 1, c"},
    {L"FileSelection", L"Cancel", L"o.DlgTitle = c : o.Dialog 0"},
    {L"Clock", nullptr, L"o.SetTimer 1000000 : o.Wait"},
};
const Waiting& kList = kWaiting[0];

// A script that makes an object and waits in its call, on a thread of its own. Its object goes on
// being served.
class Script {
public:
    Script(const Waiting& kind, const std::wstring& caption) : object_(Remote(kind.name))
    {
        IStream* stream = nullptr;
        Check(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, object_.Dispatch(), &stream));
        rightly_ = std::async(std::launch::async, [kind, caption, stream] {
            const ApartmentRecord record;
            ComPtr<IDispatch> object;
            Check(CoGetInterfaceAndReleaseStream(stream, IID_PPV_ARGS(&object)));
            Engine engine([&](const std::wstring&) { return object; });
            engine.Add(L"o");
            engine.Run(L"c = \"" + caption + L'"');
            return engine.Run(kind.statement).error.number == 0;
        });
        if (kind.button)
            button_ = Desk().Control(caption, L"Button", kind.button);
        else
            Desk().WaitFor(L"the clock", [this] { return object_.Get(L"Running") == -1; });
        UINT count = 0;
        Check(object_.Dispatch()->GetTypeInfoCount(&count));
    }
    ~Script()
    {
        if (!Returned()) Answer();
    }

    void Answer()
    {
        if (button_)
            PostMessageW(GetParent(button_), WM_COMMAND, GetDlgCtrlID(button_),
                         HandleToLong(button_));
        else
            object_.Call(L"RemoveTimer");
    }
    bool Returned(int milliseconds = 0) const
    {
        return rightly_.wait_for(std::chrono::milliseconds(milliseconds)) ==
               std::future_status::ready;
    }
    bool ReturnedRightly() { return Returned(5'000) && rightly_.get(); }

private:
    ScriptObject object_;
    HWND button_ = nullptr;
    std::shared_future<bool> rightly_;
};

// The next client is served.
void ExpectServer()
{
    EXPECT_EQ(Remote(L"Profile").Get(L"ErrorLevel"), 1);
}

TEST(RunningServer, ScriptsThatWaitDoNotHoldEachOtherUp)
{
    for (const Waiting& kind : kWaiting) {
        SCOPED_TRACE(Narrow(kind.name));
        Script first(kind, L"first");
        Script second(kind, L"second");
        Script list(kList, L"list");
        ExpectServer();

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

// There are 32 threads for waits: dialog 32, counted from 0, is nested in number 0.
TEST(RunningServer, FortyDialogsReturnToTheirOwnScripts)
{
    constexpr int kCount = 40;
    constexpr int kThreads = 32;
    std::deque<Script> scripts;
    for (int number = 0; number < kCount; ++number)
        scripts.emplace_back(kList, L"dialog " + std::to_wstring(number));

    scripts[0].Answer();
    scripts[kThreads - 1].Answer();
    EXPECT_TRUE(scripts[kThreads - 1].ReturnedRightly());
    EXPECT_FALSE(scripts[0].Returned()) << "the one on top of it is still open";
    for (int number = kCount - 1; number >= 0; --number) {
        scripts[number].Answer();
        EXPECT_TRUE(scripts[number].ReturnedRightly()) << number;
    }
}

// The platform counts the references of killed clients down, or, as here, never does: the server
// has to do well without.
TEST(RunningServer, SurvivesKilledClients)
{
    const std::pair<std::wstring, const wchar_t*> cases[] = {
        {L"Dim all(99) : " + WithEachClass(L"Set all(i) = o : i = i + 1") + L" |", nullptr},
        {L"Set o = CreateObject(\"Quill.List\") | o.Selection \"a\", 0, \"killed\"", L"killed"},
        {L"Set o = CreateObject(\"Quill.MessageBox\") | o.Show \"a\", 0, \"killed\"", L"killed"},
        {L"Set o = CreateObject(\"Quill.Notice\") : o.IconID = 32516 : o.BalloonText = \"a\" : "
         L"o.BalloonIcon = 1 : If Not o.Add Then Err.Raise 5 Else o.ShowBalloon |",
         nullptr},
        {L"Dim kept(1) : For Each name In Array(\"Window\", \"ProgressWindow\") : "
         L"Set kept(i) = CreateObject(\"Quill.\" & name) : kept(i).Create : i = i + 1 : Next |",
         nullptr},
        {L"Clock.SetTimer 1000000 |", nullptr},
        {L"Clock.SetTimer 20 : Clock.Wait |", nullptr}, // is being called when it dies
    };
    for (const auto& [script, caption] : cases) {
        SCOPED_TRACE(Narrow(script));
        const Client client(script);
        ASSERT_TRUE(client.Ready());
        if (caption) Desk().Control(caption, L"Button", L"OK");
        client.Kill();

        Script other(kList, L"other");
        ExpectServer();
        other.Answer();
        EXPECT_TRUE(other.ReturnedRightly());
    }
}

HWND ServerWindow()
{
    return FindWindowW(L"quill.Server", nullptr);
}

Event ServerProcess()
{
    ScriptObject server = Remote(L"Me");
    DWORD id = 0;
    EXPECT_EQ(server.Get(L"ThreadID"),
              static_cast<long>(GetWindowThreadProcessId(ServerWindow(), &id)));
    EXPECT_EQ(server.Get(L"ProcessID"), static_cast<long>(id));
    return Event(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id));
}

TEST(RunningServer, EndsWithTheSession)
{
    const Event process = ServerProcess();
    std::deque<Script> scripts;
    for (const Waiting& kind : kWaiting)
        scripts.emplace_back(kind, L"open " + std::wstring(kind.name));
    ScriptObject notice = Remote(L"Notice");
    notice.Put(L"IconID", 32516);
    notice.Put(L"ContextMenu", MakeStringArray({L"one"}, true));
    ASSERT_TRUE(notice.Call(L"Add"));
    const auto icon = [] {
        return FindWindowExW(FindWindowW(nullptr, L"Wine System Tray"), nullptr,
                             L"__winex11_tray_icon", nullptr);
    };
    EXPECT_TRUE(icon());
    Desk desk;
    // The menu is no call of a script: whoever clicks the icon opens it.
    PostMessageW(FindWindowW(L"frmNoteMsg", nullptr), 0x8008, MAKEWPARAM(300, 300),
                 MAKELPARAM(WM_CONTEXTMENU, 0));
    desk.Window({}, L"#32768");
    EXPECT_EQ(notice.Get(L"TrayClicked"), 0);
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
        bool all = true;
        for (const HWND window : windows) {
            DWORD_PTR answer = TRUE;
            SendMessageTimeoutW(window, message, wParam, 0, SMTO_NORMAL, 10'000, &answer);
            all &= answer != FALSE;
        }
        return all;
    };
    PostMessageW(ServerWindow(), WM_CLOSE, 0, 0); // means others
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
    EXPECT_EQ(ExitCode(process, 10'000), 0u) << "a thread did not end";
    std::ifstream written(std::filesystem::path(folder.Path(L"data")), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), "written");

    ExpectServer();
}

// The system would end it after five seconds.
TEST(RunningServer, EndsWithTheSessionThoughAClientDoesNotAnswer)
{
    const Event process = ServerProcess();
    const Client client(L"Clock.SetTimer 20 : Clock.Wait |");
    ASSERT_TRUE(client.Ready());
    const ULONGLONG begin = GetTickCount64();
    SendMessageTimeoutW(ServerWindow(), WM_ENDSESSION, TRUE, 0, SMTO_NORMAL, 10'000, nullptr);
    EXPECT_EQ(ExitCode(process, 10'000), 1u);
    EXPECT_LT(GetTickCount64() - begin, 5'000u);
    ExpectServer();
}

} // namespace
} // namespace quill::test
