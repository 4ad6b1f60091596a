#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "support/Reaction.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "windows/ProgressDialog.h"

namespace quill::test {
namespace {

using Calls = std::vector<std::string>;

// Stands for the shell's dialog: Wine's shows no third line and keeps no time.
class RecordingDialog final : public StandIn<IProgressDialog> {
public:
    explicit RecordingDialog(Calls& calls) : calls_(calls) {}

    STDMETHODIMP StartProgressDialog(HWND parent, IUnknown*, DWORD flags, LPCVOID) override
    {
        return Add("start " + std::to_string(flags) + (parent ? " modal" : ""));
    }
    STDMETHODIMP StopProgressDialog() override { return Add("stop"); }
    STDMETHODIMP SetTitle(PCWSTR title) override { return Add("title " + Narrow(title)); }
    STDMETHODIMP SetAnimation(HINSTANCE, UINT) override { return E_NOTIMPL; }
    STDMETHODIMP_(WINBOOL) HasUserCancelled() override { return -1; }
    STDMETHODIMP SetProgress(DWORD done, DWORD total) override
    {
        return Add(std::to_string(done) + '/' + std::to_string(total));
    }
    STDMETHODIMP SetProgress64(ULONGLONG done, ULONGLONG total) override
    {
        return Add("64: " + std::to_string(done) + '/' + std::to_string(total));
    }
    STDMETHODIMP SetLine(DWORD line, PCWSTR text, WINBOOL compact, LPCVOID) override
    {
        return Add("line " + std::to_string(line) + ' ' + Narrow(text) + (compact ? " cp" : ""));
    }
    STDMETHODIMP SetCancelMsg(PCWSTR text, LPCVOID) override
    {
        return Add("cancel " + Narrow(text));
    }
    STDMETHODIMP Timer(DWORD action, LPCVOID) override
    {
        Add("timer " + std::to_string(action));
        return E_FAIL;
    }

private:
    HRESULT Add(std::string call)
    {
        const bool refused = call == "title refused";
        calls_.push_back(std::move(call));
        return refused ? E_ACCESSDENIED : S_OK;
    }

    Calls& calls_;
};

TEST(ProgressDialog, HandsOnWhatTheDialogMayHave)
{
    Calls calls;
    const auto platform = std::exchange(Seam<ShellDialogs>().create, [&calls] {
        return ComPtr<IProgressDialog>(new RecordingDialog(calls));
    });
    const auto told = [&] { return std::exchange(calls, {}); };
    ScriptObject dialog = ScriptObject::Make(L"ProgressDialog");
    Seam<ShellDialogs>().create = platform;
    const auto useAll = [&] {
        dialog.Call(L"SetProgress", 1, -1);
        dialog.Call(L"SetProgress64", 1, 0.5);
        dialog.Call(L"SetText", L"a");
        for (const int line : {0, 2, 3, 4, -1})
            dialog.Call(L"SetText", L"b", line, false);
        dialog.Call(L"SetTimer");
        for (const int action : {0, 2, 3, 4})
            dialog.Call(L"SetTimer", action);
    };
    useAll();
    dialog.Call(L"StopDlg");
    EXPECT_EQ(told(), Calls()) << "not started";
    dialog.Put(L"Title", std::wstring(300, L't'));
    dialog.Put(L"CancelMsg", L"wait");
    const std::string title = "title " + std::string(256, 't');
    EXPECT_EQ(told(), (Calls{title, "cancel wait"}));

    dialog.Call(L"StartDlg", -1);
    dialog.Call(L"StartDlg");
    EXPECT_EQ(told(), (Calls{"start 126", title}));
    useAll();
    EXPECT_EQ(told(), (Calls{"1/4294967295", "64: 10000/5000", "line 1 a cp", "line 2 b", "timer 1",
                             "timer 2", "timer 3"}));
    EXPECT_EQ(dialog.Get(L"Cancellation"), false) << "only a positive answer counts";
    EXPECT_EQ(ErrorOf([&] { dialog.Put(L"Title", L"refused"); }).number, 0x80070005U);
    dialog.Call(L"StopDlg");
    told();

    EXPECT_EQ(ErrorOf([&] { dialog.Call(L"StartDlg", 1); }).number, 0x80070005U);
    dialog.Call(L"SetText", L"c", 3);
    dialog.Release();
    EXPECT_EQ(told(), (Calls{"start 0", "title refused", "line 3 c cp", "stop"}));
}

TEST(ProgressDialog, ShowsItsLinesAndHearsOfTheCancel)
{
    ScriptObject dialog = ScriptObject::Make(L"ProgressDialog");
    dialog.Put(L"CancelMsg", std::wstring(100'000, L'c'));
    dialog.Put(L"Title", L"A quill copies");
    EXPECT_EQ(dialog.Get(L"Cancellation"), false);
    dialog.Call(L"StartDlg");
    dialog.Call(L"SetText", std::wstring(100'000, L'x'), 1, true);
    dialog.Call(L"SetText", L"second", 2, false);
    dialog.Call(L"SetProgress", 25, 100);
    Robot robot([&](Desk& desk) {
        desk.Control(L"A quill copies", L"Static", L"second");
        const HWND bar = desk.Control(L"A quill copies", PROGRESS_CLASSW);
        desk.WaitFor(L"the bar", [bar] { return SendMessageW(bar, PBM_GETPOS, 0, 0) == 25; });
        desk.Click(desk.Control(L"A quill copies", L"Button", L"Cancel"));
        desk.WaitFor(L"the cancel", [&] { return dialog.Get(L"Cancellation").Truth(); });
    });
    robot.Finish();
    dialog.Release();
    Robot([](Desk& desk) {
        desk.WaitFor(L"the end", [] { return !FindWindowW(nullptr, L"A quill copies"); });
    });
}

} // namespace
} // namespace quill::test
