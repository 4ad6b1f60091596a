// What lines of a table cannot say of dialogs and their windows.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "core/MessagePump.h"
#include "dialogs/frmDTPick.h"
#include "fuzz/Held.h"
#include "gui/MessageHook.h"
#include "gui/windowfn.h"
#include "support/LateBound.h"
#include "support/Robot.h"
#include "support/Stage.h"

namespace quill::test {
namespace {

// A password with 1 added to each unit: nothing of the test holds it as it is. What was emptied has
// lost its beginning only.
constexpr std::wstring_view kMixed = L"dpssfdu!ipstf!cbuufsz";
constexpr std::wstring_view kEnd = kMixed.substr(kMixed.size() / 2);

std::atomic<int> freed; // with a password inside

void LookAtFreed(const void* block, size_t bytes)
{
    const auto* begin = static_cast<const wchar_t*>(block);
    const auto* end = begin + bytes / sizeof *begin;
    const auto same = [](int unit, int mixed) { return unit + 1 == mixed; };
    freed += std::search(begin, end, kEnd.begin(), kEnd.end(), same) != end;
}

LRESULT CALLBACK NoteTexts(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR noted,
                           DWORD_PTR)
{
    if (message == WM_SETTEXT)
        *reinterpret_cast<std::wstring*>(noted) +=
            reinterpret_cast<wchar_t*>(lParam) + std::wstring(L"|");
    return DefSubclassProc(edit, message, wParam, lParam);
}

// The memory that the platform holds for the text box is overwritten through its text.
TEST(MInputBox, PasswordsDoNotStayInMemory)
{
    ComPtr<IDispatch> box = Stage::Make(L"MInputBox");
    auto* const input = static_cast<_MInputBox*>(box.Get());
    Check(input->put_Title(MakeBstr(L"About you").get()));
    Check(input->put_InputFlags(1));
    fuzz::CountTaskBlocks();
    fuzz::onFree = LookAtFreed;
    std::wstring noted;
    Robot robot([&](Desk& desk) {
        const HWND edit = desk.Control(L"About you", L"Edit");
        desk.Do([&] { InstallHook(edit, &noted, NoteTexts); });
        for (const wchar_t mixed : kMixed)
            desk.Press(0, 0, static_cast<wchar_t>(mixed - 1));
        desk.Press(VK_RETURN);
    });
    Variant texts;
    Variant values;
    VARIANT_BOOL accepted = VARIANT_FALSE;
    Check(input->InputM(&texts, &accepted));
    Check(input->get_Values(&values));
    box.Reset();
    fuzz::onFree = nullptr; // what is left is the script's
    EXPECT_EQ(freed, 0);
    EXPECT_EQ(noted, std::wstring(kMixed.size(), L'*') + L"||");
    EXPECT_EQ(V_BSTR(&DataOf<Variant>(*V_ARRAY(&values))[0])[0], kMixed[0] - 1);
}

TEST(frmDTPick, HandlesTellWhetherThePickersAreThere)
{
    EXPECT_TRUE(frmDTPick::PickersMade(PickMode::Date, 4, 0));
    EXPECT_TRUE(frmDTPick::PickersMade(PickMode::Time, 0, 4));
    EXPECT_FALSE(frmDTPick::PickersMade(PickMode::Time, 4, 0));
    EXPECT_TRUE(frmDTPick::PickersMade(PickMode::Both, 6, 3));
    EXPECT_FALSE(frmDTPick::PickersMade(PickMode::Both, 4, 3));
}

TEST(Foreground, ARefusedOneRaises)
{
    const Stage stage;
    Stage::Record(L"foreground");
    Stage::Answer(L"foreground", L"0");
    const auto make = [] {
        return CreateWindowExW(0, WC_STATICW, L"raised", WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr,
                               nullptr, nullptr, nullptr);
    };
    const HWND window = make();
    const HWND other = make();
    SetActiveWindow(other);
    ASSERT_EQ(FindWindowW(nullptr, L"raised"), other); // the upper one
    BringToFront(window, true);
    EXPECT_EQ(FindWindowW(nullptr, L"raised"), window);
    EXPECT_EQ(GetActiveWindow(), other);
    const auto isTopmost = [&] { return GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST; };
    EXPECT_FALSE(isTopmost());
    SetTopmost(window, true); // a message box may be so by its style
    BringToFront(window, false);
    EXPECT_TRUE(isTopmost());
    DestroyWindow(window);
    DestroyWindow(other);
}

// The message is still there for the loop outside.
TEST(Form, AThreadThatIsToEndEndsItsWaits)
{
    const Variant lines[] = {Variant(L"a"), Variant(0L), Variant(L"b")};
    PostQuitMessage(7);
    Invoke(Stage::Make(L"List").Get(), L"Selection", lines);
    EXPECT_EQ(RunMessageLoop(), 7);
}

} // namespace
} // namespace quill::test
