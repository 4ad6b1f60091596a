// A server and its clients: many at once, killed ones, those that meet its start or end, and the
// end of the session. QUILL_ROUNDS says how often for what depends on the moment.
#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <fstream>
#include <future>
#include <random>

#include "../bench/server.h"
#include "support/Engine.h"
#include "support/Remote.h"
#include "support/Robot.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

// A class whose calls wait for the user.
struct Waiting {
    const wchar_t* name;
    const wchar_t* button; // ends its wait
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
};
const Waiting& kList = kWaiting[0];

// A script that makes an object and waits in its call, on a thread of its own.
class Script {
public:
    Script(const Waiting& kind, const std::wstring& caption)
        : rightly_(std::async(std::launch::async, [=] {
              const ApartmentRecord record;
              Engine engine({});
              engine.Run(L"c = \"" + caption + L"\" : Set o = CreateObject(\"Quill." + kind.name +
                         L"\")");
              return engine.Run(kind.statement).error.number == 0;
          }))
    {
        if (kind.button) button_ = Desk().Control(caption.c_str(), L"Button", kind.button);
    }
    ~Script()
    {
        if (!Returned()) Answer();
    }

    void Answer()
    {
        PostMessageW(GetParent(button_), WM_COMMAND, GetDlgCtrlID(button_), HandleToLong(button_));
    }
    bool Returned(int milliseconds = 0) const
    {
        return rightly_.wait_for(std::chrono::milliseconds(milliseconds)) ==
               std::future_status::ready;
    }
    bool ReturnsRightly()
    {
        Answer();
        return Returned(5'000) && rightly_.get();
    }

private:
    std::shared_future<bool> rightly_;
    HWND button_ = nullptr;
};

// A number that an object of this class has.
long Number(const wchar_t* className, const wchar_t* property)
{
    const Variant value = Invoke(Remote(className).Get(), property);
    return V_VT(&value) == VT_I2 ? V_I2(&value) : V_I4(&value);
}

// The next client is served.
void ExpectServer()
{
    EXPECT_EQ(Number(L"Profile", L"ErrorLevel"), 1);
}

HWND ServerWindow()
{
    return FindWindowW(L"quill.Server", nullptr);
}

// Neither the one that came last comes back first, nor the one that came first.
TEST(RunningServer, ScriptsThatWaitDoNotHoldEachOtherUp)
{
    for (const Waiting& kind : kWaiting) {
        SCOPED_TRACE(Narrow(kind.name));
        Script first(kind, L"first");
        Script second(kind, L"second");
        Script list(kList, L"list");
        ExpectServer();
        EXPECT_TRUE(second.ReturnsRightly());
        EXPECT_FALSE(first.Returned() || list.Returned());
        EXPECT_TRUE(first.ReturnsRightly());
        EXPECT_FALSE(list.Returned());
        EXPECT_TRUE(list.ReturnsRightly());
    }
}

// There are 32 threads for waits: dialog 32, counted from 0, is nested in number 0.
TEST(RunningServer, FortyDialogsReturnToTheirOwnScripts)
{
    std::deque<Script> scripts;
    for (int number = 0; number < 40; ++number)
        scripts.emplace_back(kList, L"dialog " + std::to_wstring(number));
    scripts[0].Answer();
    EXPECT_TRUE(scripts[31].ReturnsRightly());
    EXPECT_FALSE(scripts[0].Returned()) << "the one on top of it is still open";
    for (; !scripts.empty(); scripts.pop_back())
        EXPECT_TRUE(scripts.back().ReturnsRightly()) << scripts.size();
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
        EXPECT_TRUE(other.ReturnsRightly());
    }
}

Event ServerProcess()
{
    DWORD id = 0;
    EXPECT_EQ(Number(L"Me", L"ThreadID"),
              static_cast<long>(GetWindowThreadProcessId(ServerWindow(), &id)));
    EXPECT_EQ(Number(L"Me", L"ProcessID"), static_cast<long>(id));
    return Event(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id));
}

TEST(RunningServer, EndsWithTheSession)
{
    const Event process = ServerProcess();
    std::deque<Script> scripts;
    for (const Waiting& kind : kWaiting)
        scripts.emplace_back(kind, L"open " + std::wstring(kind.name));
    scripts.emplace_back(Waiting{L"Clock", nullptr, L"o.SetTimer 1000000 : o.Wait"}, L"");
    const TemporaryFolder folder;
    Engine engine({});
    EXPECT_EQ(engine
                  .Run(L"Set notice = CreateObject(\"Quill.Notice\") : notice.IconID = 32516\n"
                       L"notice.ContextMenu = Array(\"one\") : added = notice.Add\n"
                       L"Set binary = CreateObject(\"Quill.File\").OpenBinary(\"" +
                       folder.Write(L"data", "") + L"\") : binary.BWrite \"written\"")
                  .error.number,
              0u);
    const auto icon = [] {
        return FindWindowExW(FindWindowW(nullptr, L"Wine System Tray"), nullptr,
                             L"__winex11_tray_icon", nullptr);
    };
    EXPECT_TRUE(icon());
    Desk desk;
    // The menu is no call of a script: whoever clicks the icon opens it.
    PostMessageW(FindWindowW(L"frmNoteMsg", nullptr), 0x8008, MAKEWPARAM(300, 300),
                 MAKELPARAM(WM_CONTEXTMENU, 0));
    desk.Window(nullptr, L"#32768");
    EXPECT_EQ(engine.Run(L"If notice.TrayClicked <> 0 Then Err.Raise 5").error.number, 0u);

    // As the system goes about it: all windows are asked, then all are told.
    std::vector<HWND> windows = Listed(nullptr);
    std::erase_if(windows, [&](HWND window) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        return owner != GetProcessId(process.get());
    });
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

int Rounds(int otherwise)
{
    const wchar_t* const rounds = _wgetenv(L"QUILL_ROUNDS");
    return rounds ? _wtoi(rounds) : otherwise;
}

// Only by scripts/stress. One object of ours keeps the server.
TEST(RunningServer, KeepsNothingOfClientsThatAreGone)
{
    const auto crowds = [](int count) {
        for (; count > 0; --count) {
            std::vector<Client> clients;
            for (int number = 0; number < 20; ++number)
                clients.emplace_back(WithEachClass(L"kind = TypeName(o)"));
            for (const Client& client : clients)
                EXPECT_EQ(client.Wait(60'000), 0u);
        }
        Sleep(2'000); // the last release is on its way
    };
    const ComPtr<IDispatch> keeper = Remote(L"Profile");
    // Wine's server can wait for itself when the last reference to an interface goes just after a
    // call to it.
    std::vector<ComPtr<IClassFactory>> held;
    for (const CatalogueRow& row : kCatalogue)
        held.push_back(bench::Hold(row.id));
    const bench::Server server(L"Quill.Profile");
    crowds(10); // all threads are there now
    const double memory = server.PrivateMegabytes();
    const long handles = server.Handles();
    const long windows = server.Windows();
    crowds(Rounds(50));
    EXPECT_LE(server.PrivateMegabytes(), 1.1 * memory + 1);
    EXPECT_LE(server.Handles(), handles + 16);
    EXPECT_LE(server.Windows(), windows);
}

// The process that serves a client on a thread of its own. Wine names a server to clients up to the
// moment in which it closes its classes, and refuses with E_FAIL who comes to it just after;
// Windows turns them to a new server in the same step. So do we.
std::future<long> UseServer()
{
    return std::async(std::launch::async, [] {
        const ApartmentRecord record(COINIT_MULTITHREADED);
        for (;;) {
            try {
                return Number(L"Me", L"ProcessID");
            } catch (const ScriptError& error) {
                if (error.number != static_cast<unsigned>(E_FAIL)) throw;
            }
        }
    });
}

// The same server in another program, which lingers for 20 ms, so that each round meets its end; in
// some, a client is killed between the first step of its first creation and the end of its last
// release. Where the platform never tells of that, the server is ended as with the session.
TEST(QuickServer, ServesClientsThatMeetItsStartOrEnd)
{
    EXPECT_EQ(Program(L"client.exe", L"/regserver").Wait(30'000), 0u);
    std::mt19937 random{1};
    for (int round = Rounds(4); round > 0; --round) {
        const bool kills = round % 3 == 0;
        UseServer().get();
        const auto due = std::chrono::steady_clock::now() +
                         std::chrono::microseconds(random() % (kills ? 1'500'000 : 35'000));
        {
            std::optional<Client> killed;
            if (kills) killed.emplace(WithEachClass(L"kind = TypeName(o)"));
            while (std::chrono::steady_clock::now() < due)
                Sleep(0);
        }
        std::future<long> clients[4];
        for (auto& client : clients)
            client = UseServer();
        long server = 0;
        for (auto& client : clients)
            EXPECT_NO_THROW(server = client.get());
        if (round % 3 == 1) continue; // the next one may meet its end
        const Event process(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(server)));
        for (const HWND window : Listed(nullptr)) // also of one that the killed client keeps
            if (kills && Desk::ClassOf(window) == L"quill.Server")
                SendMessageW(window, WM_ENDSESSION, TRUE, 0);
        EXPECT_TRUE(!process || WaitForSingleObject(process.get(), 20'000) == WAIT_OBJECT_0)
            << "nobody needs it";
    }
    EXPECT_EQ(Program(L"client.exe", L"/unregserver").Wait(30'000), 0u);
}

} // namespace
} // namespace quill::test
