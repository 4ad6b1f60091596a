// How dialogs end, and what they tell of it: the same for all of them.
#include <gtest/gtest.h>

#include <atomic>

#include "core/Apartment.h"
#include "gui/AnswerTime.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"How it ends";

enum Ended : short { kNone, kAccepted, kCancelled, kClosed, kTimeOver, kClientGone, kNotShown };

// Seconds that pass quickly.
class ShortSeconds {
public:
    explicit ShortSeconds(DWORD milliseconds = 20)
    {
        Seam<AnswerSecond>().milliseconds = milliseconds;
    }
    ~ShortSeconds() { Seam<AnswerSecond>() = {}; }
};

struct Kind {
    const wchar_t* name;
    bool (*show)(ScriptObject& dialog); // true when the answer has come back
    void (*refuse)(ScriptObject& dialog);
};

void CallWithArray(ScriptObject& dialog, const wchar_t* method)
{
    Variant array = ScriptArray(1, 2);
    SAFEARRAY* elements = V_ARRAY(&array);
    EXPECT_FALSE(dialog.Call(method, Reference(VT_ARRAY | VT_VARIANT, &elements)).Truth());
}

const Kind kKinds[] = {
    {L"List",
     [](ScriptObject& list) { return list.Call(L"Selection", L"a\r\nb", 1, kTitle) == L"b"; },
     [](ScriptObject& list) { list.Call(L"Selection", L""); }},
    {L"CheckList",
     [](ScriptObject& list) { return list.Call(L"Selection", L"a\r\nb", 2, kTitle) == 2; },
     [](ScriptObject& list) { list.Call(L"SelectionA", Arg(Variant(5.0))); }},
    {L"DriveList",
     [](ScriptObject& list) { return !list.Call(L"Selection", L"c", kTitle).Text().empty(); },
     nullptr},
    {L"DTPick",
     [](ScriptObject& picker) {
         picker.Put(L"Title", kTitle);
         Variant date;
         return picker.Call(L"Selection", &date).Truth();
     },
     [](ScriptObject& picker) { CallWithArray(picker, L"Selection"); }},
    {L"MInputBox",
     [](ScriptObject& box) {
         return box.Call(L"InputS", L"Say something", kTitle, L"text") == L"text";
     },
     [](ScriptObject& box) { CallWithArray(box, L"InputM"); }},
};

void PrintTo(const Kind& kind, std::ostream* out)
{
    *out << Narrow(kind.name);
}

// The dialog, whatever stands in its caption.
HWND Form(Desk& desk)
{
    return desk.Window(nullptr, L"quill.Form");
}

// The number in "caption (12)"; 0 for anything else.
int NumberBehind(const std::wstring& caption, const std::wstring& text)
{
    int number = 0;
    const bool counts = text.starts_with(caption + L" (") && text.ends_with(L')');
    return counts && swscanf(text.c_str() + caption.size(), L" (%d)", &number) == 1 ? number : 0;
}

class SelectionDialog : public testing::TestWithParam<Kind> {
protected:
    // Shows the dialog and compares what it tells.
    void Expect(short outcome, bool accepted, Robot::Script script)
    {
        Robot robot(std::move(script));
        EXPECT_EQ(GetParam().show(dialog_), accepted);
        EXPECT_TRUE(robot.Finish());
        EXPECT_EQ(dialog_.Get(L"Outcome"), outcome);
    }

    // The same for one that nobody answers.
    void ExpectTimeOver(bool accepted)
    {
        std::atomic<bool> returned = false;
        Robot robot([&](Desk& desk) {
            desk.WaitFor(L"the end of the time", [&] { return returned.load(); });
        });
        EXPECT_EQ(GetParam().show(dialog_), accepted);
        returned = true;
        EXPECT_TRUE(robot.Finish());
        EXPECT_EQ(dialog_.Get(L"Outcome"), kTimeOver);
    }

    ScriptObject dialog_ = ScriptObject::Make(GetParam().name);
};

INSTANTIATE_TEST_SUITE_P(Each, SelectionDialog, testing::ValuesIn(kKinds),
                         [](const auto& kind) { return Narrow(kind.param.name); });

TEST_P(SelectionDialog, TellsHowItEnded)
{
    EXPECT_EQ(dialog_.Get(L"Outcome"), kNone);
    Expect(kAccepted, true, ClickButton(kTitle));
    Expect(kClosed, false, CloseBox(kTitle));
    if (GetParam().refuse) {
        GetParam().refuse(dialog_);
        EXPECT_EQ(dialog_.Get(L"Outcome"), kNotShown);
    }
    LastClient client(dialog_.Dispatch());
    Expect(kClientGone, false, [&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        client.Die();
        desk.WaitUntilGone(window);
    });
}

TEST_P(SelectionDialog, ClosesByItself)
{
    const ShortSeconds seconds;
    dialog_.Put(L"Timeout", 5);
    dialog_.Put(L"Timeout", 86'401); // ignored
    dialog_.Put(L"Timeout", -1);
    EXPECT_EQ(dialog_.Get(L"Timeout"), 5);
    ExpectTimeOver(false);
    dialog_.Put(L"TimeoutAccepts", true);
    ExpectTimeOver(true);
}

TEST_P(SelectionDialog, CountsDownUntilTheUserDoesSomething)
{
    const ShortSeconds seconds;
    dialog_.Put(L"Timeout", 500);
    dialog_.Put(L"ShowCountdown", true);
    const auto watch = [](const wchar_t* caption, bool button) {
        return [=](Desk& desk) {
            const HWND form = Form(desk);
            HWND shown = form;
            if (button)
                for (HWND each : desk.Controls(form, L"Button"))
                    if (NumberBehind(caption, Desk::TextOf(each)) > 0) shown = each;
            const auto left = [&] { return NumberBehind(caption, Desk::TextOf(shown)); };
            ASSERT_GT(left(), 0) << Narrow(Desk::TextOf(shown));
            desk.WaitFor(L"the countdown", [&] { return left() <= 490; });
            const int before = left();
            desk.Press(VK_SHIFT);
            desk.WaitFor(L"the time to start anew", [&] { return left() > before; });
            desk.Close(form);
        };
    };
    Expect(kClosed, false, watch(kTitle, false));
    dialog_.Put(L"CancelText", L"No");
    Expect(kClosed, false, watch(L"No", true));
    dialog_.Put(L"TimeoutAccepts", true);
    Expect(kClosed, false, watch(L"OK", true));
}

TEST_P(SelectionDialog, CancelsByItsButton)
{
    RECT alone{};
    LONG rightEdge = 0;
    Expect(kClosed, false, [&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        alone = Desk::PlaceOf(desk.Control(kTitle, L"Button"));
        rightEdge = Desk::PlaceOf(window).right - alone.right;
        EXPECT_EQ(desk.Controls(window, L"Button").size(), 1U);
        desk.Close(window);
    });

    dialog_.Put(L"CancelText", L"No");
    Expect(kCancelled, false, [&](Desk& desk) {
        const HWND no = desk.Control(kTitle, L"Button", L"No");
        const RECT window = Desk::PlaceOf(desk.Window(kTitle));
        const RECT ok = Desk::PlaceOf(desk.Control(kTitle, L"Button", L"OK"));
        const RECT place = Desk::PlaceOf(no);
        EXPECT_EQ(window.right - place.right, rightEdge);
        EXPECT_EQ(place.top, ok.top);
        EXPECT_LT(ok.right, place.left);
        EXPECT_EQ(ok.right - ok.left, alone.right - alone.left);
        EXPECT_GT(ok.left, window.left + 10);
        desk.Click(no);
    });
    Expect(kCancelled, false, Keys(kTitle, L"Button", {VK_ESCAPE}));
    // It is the last one for the tab key, and Enter presses it rather than OK.
    const bool startsAtOk = GetParam().name == std::wstring_view(L"DriveList");
    Expect(kCancelled, false, [&](Desk& desk) {
        desk.Window(kTitle);
        if (startsAtOk)
            desk.Press(VK_TAB);
        else
            desk.Press(VK_TAB, {VK_SHIFT});
        desk.Press(VK_RETURN);
    });

    // A caption for which there is no room.
    dialog_.Put(L"CancelText", std::wstring(40, L'W'));
    dialog_.Put(L"ButtonText", std::wstring(40, L'M'));
    Expect(kClosed, false, [&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        RECT frame{};
        desk.WaitFor(L"the window to stand where it was placed", [&] {
            frame = Desk::PlaceOf(window);
            const RECT last = Desk::PlaceOf(desk.Controls(window, L"Button").back());
            return last.right < frame.right - 10 && last.left > frame.left + 10;
        });
        RECT before{};
        for (HWND button : desk.Controls(window, L"Button")) {
            EXPECT_EQ(Desk::TextOf(button).size(), 32U);
            const RECT place = Desk::PlaceOf(button);
            EXPECT_GT(place.left, frame.left + 10);
            EXPECT_LT(place.right, frame.right - 10);
            EXPECT_GT(place.left, before.right);
            before = place;
        }
        if (GetWindowLongW(window, GWL_STYLE) & WS_THICKFRAME) {
            MINMAXINFO limits{};
            SendMessageW(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
            EXPECT_EQ(limits.ptMinTrackSize.x, frame.right - frame.left);
        }
        desk.Close(window);
    });
}

class TimeOver : public testing::Test {
protected:
    TimeOver() { box_.Put(L"Title", kTitle); }

    const ShortSeconds seconds_;
    ScriptObject box_ = ScriptObject::Make(L"MInputBox");
};

TEST_F(TimeOver, IsACancelWhereOkRefuses)
{
    box_.Put(L"Timeout", 5);
    box_.Put(L"TimeoutAccepts", true);
    box_.Put(L"InpMinLen", ScriptArray(3));
    Variant texts;
    EXPECT_FALSE(box_.Call(L"InputM", &texts).Truth());
    EXPECT_EQ(box_.Get(L"Outcome"), kTimeOver);
}

// The loops that the platform runs for a menu and a drag end, and the call returns.
TEST_F(TimeOver, EndsMenusAndDrags)
{
    box_.Put(L"Timeout", 50);
    const Robot::Script ways[] = {[](Desk& desk) {
                                      desk.Click(desk.Control(kTitle, L"Edit"),
                                                 Desk::Button::Right);
                                      desk.WaitUntilGone(desk.Window(nullptr, L"#32768"));
                                  },
                                  [](Desk& desk) {
                                      const HWND window = desk.Window(kTitle);
                                      desk.Post(window, WM_SYSCOMMAND, SC_MOVE);
                                      desk.WaitUntilGone(window);
                                  }};
    for (const Robot::Script& way : ways) {
        Robot robot(way);
        box_.Call(L"InputS", L"Say something", kTitle);
        EXPECT_TRUE(robot.Finish());
        EXPECT_EQ(box_.Get(L"Outcome"), kTimeOver);
    }
}

// The outer dialog goes at its time; its call returns after the inner one's.
TEST_F(TimeOver, ClosesADialogBelowANestedOne)
{
    box_.Put(L"Timeout", 10);
    ScriptObject inner = ScriptObject::Make(L"List");
    const DuringWait nested([&] { inner.Call(L"Selection", L"a", 0, L"Inner"); });
    Robot robot([](Desk& desk) {
        const HWND window = desk.Window(L"Inner");
        desk.WaitFor(L"the outer dialog to go", [] { return !FindWindowW(nullptr, kTitle); });
        desk.Close(window);
    });
    box_.Call(L"InputS", L"Say something", kTitle);
    EXPECT_TRUE(robot.Finish());
    EXPECT_EQ(box_.Get(L"Outcome"), kTimeOver);
    EXPECT_EQ(inner.Get(L"Outcome"), kClosed);
}

// The platform's own dialogs.
TEST(PlatformDialogs, TellHowTheyEnded)
{
    const ShortSeconds seconds;
    ScriptObject box = ScriptObject::Make(L"MessageBox");
    ScriptObject task = ScriptObject::Make(L"TaskDialog");
    ScriptObject files = ScriptObject::Make(L"FileSelection");
    files.Put(L"DlgTitle", kTitle);
    const auto showBox = [&] { return box.Call(L"Show", L"Go on?", MB_OKCANCEL, kTitle).Number(); };
    const auto showTask = [&] { return task.Call(L"Show", L"Go on?", 9, kTitle).Number(); };
    const auto showFiles = [&] { return files.Call(L"Dialog", 0).Number(); };
    {
        Robot robot(Keys(kTitle, L"Button", {VK_RETURN}));
        EXPECT_EQ(showBox(), IDOK);
        EXPECT_EQ(box.Get(L"Outcome"), kAccepted);
    }
    {
        Robot robot(Keys(kTitle, L"Button", {VK_RETURN}));
        EXPECT_EQ(showTask(), IDOK);
        EXPECT_EQ(task.Get(L"Outcome"), kAccepted);
    }
    {
        Robot robot(Keys(kTitle, L"Button", {VK_ESCAPE}));
        EXPECT_EQ(showBox(), IDCANCEL);
        EXPECT_EQ(box.Get(L"Outcome"), kCancelled);
    }
    {
        Robot robot(CloseBox(kTitle));
        EXPECT_EQ(showFiles(), 0);
        EXPECT_EQ(files.Get(L"Outcome"), kCancelled);
    }
    for (ScriptObject* dialog : {&box, &task, &files})
        dialog->Put(L"Timeout", 10);
    // One without a way to cancel ends as well.
    EXPECT_EQ(box.Call(L"Show", L"Yes or no?", MB_YESNO, kTitle), short{-1});
    EXPECT_EQ(showTask(), 0);
    EXPECT_EQ(showFiles(), 0);
    for (ScriptObject* dialog : {&box, &task, &files})
        EXPECT_EQ(dialog->Get(L"Outcome"), kTimeOver);
    EXPECT_EQ(task.Get(L"ErrorCode"), 0);
    EXPECT_EQ(files.Get(L"ErrorCode"), -1);
    EXPECT_NE(ErrorOf([&] { files.Call(L"Dialog", 9); }).number, 0U);
    EXPECT_EQ(files.Get(L"Outcome"), kNotShown);
}

} // namespace
} // namespace quill::test
