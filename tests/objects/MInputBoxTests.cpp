#include <gtest/gtest.h>

#include <tuple>

#include "core/Apartment.h"
#include "dialogs/FileDialog.h"
#include "dialogs/FolderDialog.h"
#include "gui/windowfn.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

using namespace std::literals;

constexpr wchar_t kTitle[] = L"About you";

std::vector<HWND> Fields(Desk& desk)
{
    return desk.Controls(desk.Window(kTitle), L"Edit");
}

HWND Ok(Desk& desk)
{
    return desk.Control(kTitle, L"Button", L"OK");
}

// The balloons that edit controls of this thread are asked to show; the platform of the tests shows
// none.
class Balloons {
public:
    Balloons() : hook_(SetWindowsHookExW(WH_CALLWNDPROC, Look, nullptr, GetCurrentThreadId()))
    {
        shown_.clear();
    }
    ~Balloons() { UnhookWindowsHookEx(hook_); }
    const std::vector<std::wstring>& Shown() const { return shown_; }

private:
    static LRESULT CALLBACK Look(int code, WPARAM wParam, LPARAM lParam)
    {
        const auto& message = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        if (code == HC_ACTION && message.message == EM_SHOWBALLOONTIP) {
            const auto& tip = *reinterpret_cast<const EDITBALLOONTIP*>(message.lParam);
            EXPECT_EQ(tip.cbStruct, 16U);
            EXPECT_EQ(tip.ttiIcon, TTI_ERROR);
            shown_.push_back(std::wstring(tip.pszTitle ? tip.pszTitle : L"none") + L": " +
                             (tip.pszText ? tip.pszText : L"none"));
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline std::vector<std::wstring> shown_;
    HHOOK hook_;
};

class MInputBoxTest : public testing::Test {
protected:
    MInputBoxTest() { box_.Put(L"Title", kTitle); }

    // Shows the fields; their texts joined by "|", behind a "-" after a cancel.
    std::wstring Ask(Robot::Script answer)
    {
        Variant texts;
        Robot robot(std::move(answer));
        const bool accepted = box_.Call(L"InputM", &texts).Truth();
        EXPECT_EQ(V_VT(&texts), VT_ARRAY | VT_VARIANT);
        std::wstring joined = accepted ? L"" : L"-";
        for (const Variant& text : DataOf<Variant>(*V_ARRAY(&texts)))
            joined += ToText(text) + L"|";
        return joined;
    }

    ScriptObject box_ = ScriptObject::Make(L"MInputBox");
};

TEST_F(MInputBoxTest, AsksForOneText)
{
    // Beyond all limits, right-to-left, CJK, outside the BMP.
    const std::wstring text = std::wstring(3000, L'x') + L"\x5e9\x5dc\x5d5 \x65e5 \xd83d\xde00";
    const std::tuple<const char*, std::wstring, Robot::Script, std::wstring> cases[] = {
        {"long", text, ClickButton(kTitle), text},
        {"Esc", L"old", Keys(kTitle, L"Edit", {VK_ESCAPE}), L""},
        {"the close box", L"old", CloseBox(kTitle), L""},
    };
    box_.Put(L"InpMinLen", ScriptArray(2000)); // of InputM only
    box_.Put(L"InpMaxLen", ScriptArray(1));
    for (const auto& [what, old, answer, result] : cases) {
        SCOPED_TRACE(what);
        Robot robot(answer);
        EXPECT_EQ(box_.Call(L"InputS", L"Your name?", kTitle, Named{L"default", old}), result);
    }
}

TEST_F(MInputBoxTest, TextsAreCut)
{
    const std::wstring text(300, L'x');
    const std::tuple<const wchar_t*, Arg, Arg> cases[] = {
        {L"PasswordChar", L"xyz", L"x"},
        {L"PasswordChar", L"", L"x"},
        {L"MinBalloonText", text, text.substr(0, 160)},
        {L"MinBalloonText", L"", text.substr(0, 160)},
    };
    for (const auto& [name, given, kept] : cases) {
        box_.Put(name, given.value);
        EXPECT_EQ(box_.Get(name), kept) << Narrow(name);
    }
}

TEST_F(MInputBoxTest, ArraysDescribeTheFields)
{
    box_.Put(L"InputNumber", 3);
    box_.Put(L"InputStart", 1);
    box_.Put(L"TextLimit", 5);
    box_.Put(L"InputFlags", 4);
    box_.Put(L"PasswordChar", L"#");
    box_.Put(L"InpLabel", ScriptArray(L"Name", 2, box_.Dispatch(), L"too many"));
    box_.Put(L"InpText", ScriptArray(L"abcdefgh", L"12"));
    box_.Put(L"InpTextStyle", ScriptArray(1, L"3", L"none"));
    box_.Put(L"InpMaxLen", ScriptArray(3, 9));
    box_.Put(L"InpLocked", ScriptArray(false, false, true));
    box_.Put(L"InpCueText", StartingAt(1, ScriptArray(L"ignored")));
    box_.Put(L"InpTipText", L"no array");
    EXPECT_EQ(Ask([](Desk& desk) {
                  const std::vector<HWND> fields = Fields(desk);
                  ASSERT_EQ(fields.size(), 3U);
                  EXPECT_EQ(desk.TextOf(desk.Controls(desk.Window(kTitle), L"Static").at(1)), L"2");
                  EXPECT_EQ(SendMessageW(fields[0], EM_GETLIMITTEXT, 0, 0), 3);
                  EXPECT_EQ(SendMessageW(fields[1], EM_GETLIMITTEXT, 0, 0), 5);
                  EXPECT_EQ(SendMessageW(fields[2], EM_GETPASSWORDCHAR, 0, 0), L'#');
                  EXPECT_TRUE(GetWindowLongW(fields[2], GWL_STYLE) & ES_READONLY);
                  desk.Type(L"3x4"); // into the second, over its text; no letters there
                  desk.Press(VK_TAB, {VK_SHIFT});
                  desk.Type(L"ende");
                  desk.Press(VK_RETURN);
              }),
              L"END|34||");
    box_.Put(L"ConvertArr", false);
    Variant texts;
    Robot robot(ClickButton(kTitle));
    EXPECT_TRUE(box_.Call(L"InputM", &texts).Truth());
    EXPECT_EQ(V_VT(&texts), VT_ARRAY | VT_BSTR);
    EXPECT_EQ(V_ARRAY(&texts)->rgsabound[0].cElements, 3U);
}

TEST_F(MInputBoxTest, FieldsThatAreTooShortKeepTheFocus)
{
    const Balloons balloons;
    box_.Put(L"InputNumber", 3);
    box_.Put(L"InpMinLen", ScriptArray(2, 2, 2));
    box_.Put(L"InpLocked", ScriptArray(false, false, true));
    box_.Put(L"MinBalloonText", L"Two at least");
    const std::wstring balloon = L"none: Two at least";
    EXPECT_EQ(Ask([&](Desk& desk) {
                  const std::vector<HWND> fields = Fields(desk);
                  const auto focus = [&] {
                      GUITHREADINFO info{};
                      info.cbSize = sizeof info;
                      GetGUIThreadInfo(GetWindowThreadProcessId(fields[0], nullptr), &info);
                      return info.hwndFocus;
                  };
                  const auto expect = [&](size_t count, HWND field) {
                      desk.WaitFor(L"balloon " + std::to_wstring(count), [&] {
                          return balloons.Shown().size() == count && focus() == field;
                      });
                  };
                  desk.Press(VK_TAB); // left too short
                  expect(1, fields[0]);
                  desk.Click(fields[1]); // the same with the mouse
                  expect(2, fields[0]);
                  desk.Type(L"ab");
                  desk.Press(VK_RETURN); // the second is too short
                  expect(3, fields[1]);
                  desk.Type(L"cd");
                  desk.Press(VK_RETURN);
              }),
              L"ab|cd||");
    EXPECT_EQ(balloons.Shown(), std::vector(3, balloon));
}

// Without a text there is no balloon to see.
TEST_F(MInputBoxTest, ARefusedFieldIsNeverSilent)
{
    static int beeps;
    beeps = 0;
    Seam<Foreground>().beep = [](UINT) { return ++beeps; };
    box_.Put(L"ShowTipControl", 2);
    box_.Put(L"InpTipText", ScriptArray(L"the tip"));
    box_.Put(L"InpMinLen", ScriptArray(2));
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, int> cases[] = {
        {L"", L"", L"At least 2 characters are needed here.", 1},
        {L"Two, please", L"", L"Two, please", 1}, // the balloon is seen
        {L"", L"Name, please", L"Name, please", 2},
    };
    for (const auto& [text, error, said, heard] : cases) {
        box_.Put(L"MinBalloonText", text);
        box_.Put(L"InpErrorText", ScriptArray(error));
        EXPECT_EQ(Ask([&](Desk& desk) {
                      const HWND field = Fields(desk)[0];
                      const auto isSaid = [&](const wchar_t* line) {
                          desk.WaitFor(line, [&] {
                              return Desk::TextOf(
                                         desk.Controls(GetParent(field), L"Static").back()) == line;
                          });
                      };
                      isSaid(L"the tip");
                      desk.Press(VK_RETURN);
                      isSaid(said);
                      desk.Type(L"ab");
                      desk.Press(VK_RETURN);
                  }),
                  L"ab|");
        EXPECT_EQ(beeps, heard);
    }
    Seam<Foreground>() = Foreground();
}

TEST_F(MInputBoxTest, PastedTextIsCheckedForDigits)
{
    box_.Put(L"InpTextStyle", ScriptArray(3));
    for (bool check : {true, false}) {
        const Balloons balloons;
        box_.Put(L"CheckNumStyle", check);
        EXPECT_EQ(Ask([&](Desk& desk) {
                      SendMessageW(Fields(desk)[0], WM_SETTEXT, 0,
                                   reinterpret_cast<LPARAM>(L"12a"));
                      desk.Click(Ok(desk));
                      if (!check) return;
                      desk.WaitFor(L"a balloon", [&] { return !balloons.Shown().empty(); });
                      desk.Press(VK_BACK, {});
                      desk.Type(L"7");
                      desk.Press(VK_RETURN);
                  }),
                  check ? L"7|" : L"12a|"); // the refused text is selected
    }
}

TEST_F(MInputBoxTest, CancelsItself)
{
    box_.Put(L"DlgCancelTime", 1);
    box_.Put(L"InpText", ScriptArray(L"unused"));
    const ULONGLONG begin = GetTickCount64();
    EXPECT_EQ(Ask([](Desk& desk) { desk.WaitUntilGone(desk.Window(kTitle)); }), L"-|");
    EXPECT_GE(GetTickCount64() - begin, 900U);
    EXPECT_EQ(box_.Get(L"Outcome"), 4);
}

// Ten rows on a screen that is too small for them: what has the focus comes into view.
TEST_F(MInputBoxTest, ScrollsWhereTheScreenIsTooSmall)
{
    box_.Put(L"InputNumber", 10);
    box_.Put(L"InpLabel", ScriptArray(std::wstring(10'000, L'm')));
    EXPECT_EQ(Ask([](Desk& desk) {
                  const HWND window = desk.Window(kTitle);
                  const std::vector<HWND> fields = Fields(desk);
                  desk.Place(window, {100, 100, 600, 300});
                  RECT client{};
                  GetClientRect(window, &client);
                  MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
                  const auto inside = [&](HWND control) {
                      const RECT place = Desk::PlaceOf(control);
                      return place.top >= client.top && place.bottom <= client.bottom;
                  };
                  EXPECT_TRUE(GetWindowLongW(window, GWL_STYLE) & WS_VSCROLL);
                  EXPECT_FALSE(inside(fields[9]));
                  for (int field = 0; field < 9; ++field)
                      desk.Press(VK_TAB);
                  desk.WaitFor(L"the last field", [&] { return inside(fields[9]); });
                  desk.Type(L"x");
                  desk.Press(VK_RETURN);
              }),
              L"|||||||||x|");
}

TEST_F(MInputBoxTest, ButtonsShowTheSystemsDialogs)
{
    Seam<FileDialogs>().show = [](OPENFILENAMEW* dialog, bool save) {
        EXPECT_TRUE(save);
        EXPECT_EQ(dialog->lpstrFile, L"a.txt"s);
        EXPECT_EQ(dialog->lpstrInitialDir, L"C:\\gone"s);
        EXPECT_EQ(std::wstring(dialog->lpstrFilter, 13), L"Texts\0*.txt\0\0"s);
        wcscpy(dialog->lpstrFile, L"D:\\long enough.txt");
        return TRUE;
    };
    Seam<FolderDialogs>().show = [](const FolderRequest& request) {
        EXPECT_EQ(request.start, L"C:\\old");
        return L"C:\\new"s;
    };
    box_.Put(L"InputNumber", 2);
    box_.Put(L"InpType", ScriptArray(9, 10));
    box_.Put(L"InpText", ScriptArray(L"C:\\gone\\a.txt", L"C:\\old"));
    box_.Put(L"InpItems", ScriptArray(L"Texts\r\n*.txt"));
    box_.Put(L"InpMinLen", ScriptArray(14)); // the user may go to the button all the same
    EXPECT_EQ(Ask([&](Desk& desk) {
                  const std::vector<HWND> fields = Fields(desk);
                  desk.Click(desk.Control(kTitle, L"Button", L"..."));
                  desk.WaitFor(L"the file", [&] { return Desk::TextOf(fields[0])[0] == L'D'; });
                  desk.PressKeys(L"{TAB}{TAB}{F4}");
                  desk.WaitFor(L"the folder",
                               [&] { return Desk::TextOf(fields[1]) == L"C:\\new"; });
                  desk.Press(VK_RETURN);
              }),
              L"D:\\long enough.txt|C:\\new|");
    Seam<FileDialogs>() = {};
    Seam<FolderDialogs>() = {};
}

// The time of the form is that of the dialog that a button of it shows, too.
TEST_F(MInputBoxTest, TheSystemsDialogEndsBeforeTheForm)
{
    box_.Put(L"InpType", ScriptArray(10));
    box_.Put(L"InpText", ScriptArray(L"C:\\kept"));
    box_.Put(L"Timeout", 1);
    box_.Put(L"TimeoutAccepts", true);
    EXPECT_EQ(Ask([](Desk& desk) {
                  const HWND form = desk.Window(kTitle);
                  desk.Press(VK_F4);
                  const HWND dialog = desk.Window(L"Select Folder");
                  desk.WaitUntilGone(dialog);
                  desk.WaitUntilGone(form);
              }),
              L"C:\\kept|");
    EXPECT_EQ(box_.Get(L"Outcome"), 4);
}

// The units of a password that nothing of the test holds as a text.
constexpr size_t kPasswordLength = 20;
constexpr wchar_t PasswordUnit(size_t index)
{
    return static_cast<wchar_t>(L'a' + index * 7 % 26);
}

// True for its units from this one on.
bool IsPassword(const wchar_t* text, size_t first)
{
    size_t index = first;
    while (index < kPasswordLength && text[index - first] == PasswordUnit(index))
        ++index;
    return index == kPasswordLength;
}

// Memory that was freed has lost its beginning only.
size_t PasswordsInMemory()
{
    size_t found = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (auto* at = static_cast<const char*>(nullptr); VirtualQuery(at, &region, sizeof region);
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State != MEM_COMMIT || region.Protect != PAGE_READWRITE) continue;
        const auto* begin = static_cast<const wchar_t*>(region.BaseAddress);
        const auto* end = begin + region.RegionSize / sizeof *begin - kPasswordLength;
        for (; begin < end; ++begin)
            found += IsPassword(begin, kPasswordLength / 2);
    }
    return found;
}

TEST_F(MInputBoxTest, PasswordsDoNotStayInMemory)
{
    box_.Put(L"InputFlags", 1);
    for (const WORD key : {WORD{VK_ESCAPE}, WORD{VK_RETURN}}) {
        Variant texts;
        Robot robot([&](Desk& desk) {
            desk.Control(kTitle, L"Edit");
            for (size_t index = 0; index < kPasswordLength; ++index)
                desk.Type(std::wstring(1, PasswordUnit(index)));
            desk.Press(key);
        });
        const bool accepted = box_.Call(L"InputM", &texts).Truth();
        EXPECT_EQ(accepted, key == VK_RETURN);
        // The result is the script's.
        EXPECT_EQ(PasswordsInMemory(), accepted ? 1U : 0U);
        if (!accepted) continue;
        const Variant values = box_.Get(L"Values");
        EXPECT_TRUE(IsPassword(V_BSTR(&DataOf<Variant>(*V_ARRAY(&values))[0]), 0));
    }
}

TEST_F(MInputBoxTest, NestedDialogsReturnFirst)
{
    // A call that comes in meanwhile shows its own dialog, and returns first.
    std::wstring nested;
    Robot robot([&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        desk.Click(desk.Control(L"Second", L"Button", L"OK"));
        desk.WaitFor(L"the second answer", [&] { return nested == L"inner"; });
        desk.Click(desk.Controls(window, L"Button")[0]);
    });
    const DuringWait second(
        [&] { nested = box_.Call(L"InputS", L"", L"Second", L"inner").Text(); });
    EXPECT_EQ(box_.Call(L"InputS", L"", kTitle, L"outer"), L"outer");
}

} // namespace
} // namespace quill::test
