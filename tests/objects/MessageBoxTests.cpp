#include <gtest/gtest.h>

#include <tuple>

#include "core/Apartment.h"
#include "dialogs/MessageBox.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// What the platform's message box is asked to show.
struct Shown {
    DWORD style = 0;
    std::wstring text;
    std::wstring caption;
    std::wstring icon; // its name, or "#" and its number
    bool module = false;
    DWORD language = 0;
};

class MessageBoxTest : public testing::Test {
protected:
    MessageBoxTest()
    {
        real_ = std::exchange(Seam<MessageBoxFunctions>().show, [this](const MSGBOXPARAMSW* box) {
            EXPECT_EQ(box->cbSize, 40U);
            EXPECT_EQ(box->hwndOwner, nullptr);
            const std::wstring icon = IconText(box->lpszIcon);
            const bool module = box->hInstance != nullptr;
            shown_ = {box->dwStyle, box->lpszText, box->lpszCaption,
                      icon,         module,        box->dwLanguageId};
            return IDYES;
        });
    }
    ~MessageBoxTest() override { Seam<MessageBoxFunctions>().show = real_; }

    template <class... Arguments>
    const Shown& Show(Arguments&&... arguments)
    {
        EXPECT_EQ(box_.Call(L"Show", std::forward<Arguments>(arguments)...), short{IDYES});
        return shown_;
    }

    ScriptObject box_ = ScriptObject::Make(L"MessageBox");
    Shown shown_;
    std::function<int(const MSGBOXPARAMSW*)> real_;
};

TEST_F(MessageBoxTest, PropertiesKeepWhatTheyCanUse)
{
    const std::tuple<const wchar_t*, int, int> cases[] = {
        {L"Buttons", 6, 6},       {L"Buttons", 7, 6},      {L"DefButton", 3, 512},
        {L"DefButton", 512, 512}, {L"DefButton", 1, 0},    {L"DefButton", 4, 768},
        {L"DefButton", 5, 0},     {L"Options", 0x4000, 0}, {L"Options", -1, 0x3FB000}};
    for (const auto& [name, value, stored] : cases) {
        box_.Put(name, value);
        EXPECT_EQ(box_.Get(name), stored) << Narrow(name) << ' ' << value;
    }
}

TEST_F(MessageBoxTest, TheStyleComesFromThePropertiesOrFromTheCall)
{
    EXPECT_EQ(Show(L"plain").style, 0U);
    box_.Put(L"Buttons", 4);
    box_.Put(L"DefButton", 2);
    box_.Put(L"Icon", 48);
    box_.Put(L"Options", 0x80000);
    EXPECT_EQ(Show(L"text").style, 0x80134U);
    box_.Put(L"Precedence", true);
    EXPECT_EQ(Show(L"text").style, 0xD3134U);
    EXPECT_EQ(Show(L"text", 1).style, 1U) << "an explicit style stands alone";
    EXPECT_EQ(Show(L"text", -2).style, 0xFFFFFFFEU);
}

TEST_F(MessageBoxTest, TextsFallBackOnTheProperties)
{
    const std::wstring longText(300, L'x');
    box_.Put(L"Text", L"the text");
    box_.Put(L"Title", longText);
    EXPECT_EQ(box_.Get(L"Title"), longText.substr(0, 256));
    EXPECT_EQ(Show().text, L"the text");
    EXPECT_EQ(shown_.caption, longText.substr(0, 256));
    EXPECT_EQ(Show(L"message", Missing{}, L"title").text, L"message");
    EXPECT_EQ(shown_.caption, L"title");
    EXPECT_EQ(Show(L"", 0, longText).caption, longText.substr(0, 256));
}

TEST_F(MessageBoxTest, IconsComeFromTheSystemOrFromAModule)
{
    const struct {
        const wchar_t *file, *id;
        int icon;
        DWORD style;
        const wchar_t* shown;
    } cases[] = {
        {L"", L"", 17, 0, L"#0"},
        {L"", L"", 64, 64, L"#0"},
        {L"", L"", 32515, MB_USERICON, L"#32515"},
        {L"", L"", 32511, 0, L"#0"}, // just beside the system's
        {L"", L"", 32519, 0, L"#0"},
        {L"shell32.dll", L"#5", 48, MB_USERICON, L"#5"},
        {L"shell32.dll", L"#65537", 0, MB_USERICON, L"#1"},
        {L"shell32.dll", L"APPICON", 0, MB_USERICON, L"APPICON"},
        {L"shell32.dll", L"", 7, MB_USERICON, L"#7"},
        {L"shell32.dll", L"", 0, 0, L"#0"},
        {L"no such file.dll", L"#5", 48, 0, L"#0"},
        {L"", L"", 32512, MB_USERICON, L"#32512"}, // after a module
    };
    for (const auto& [file, id, icon, style, shown] : cases) {
        SCOPED_TRACE(Narrow(file) + Narrow(id) + ' ' + std::to_string(icon));
        box_.Put(L"IconResFile", file);
        box_.Put(L"IconResID", id);
        box_.Put(L"Icon", icon);
        Show(L"text");
        EXPECT_EQ(shown_.style, style);
        EXPECT_EQ(shown_.icon, shown);
        EXPECT_EQ(shown_.module, style == MB_USERICON && *file);
    }
    box_.Put(L"IconResFile", L"shell32.dll");
    box_.Put(L"IconResID", L"#99999999999");
    EXPECT_EQ(ErrorOf([&] { Show(L"text"); }).number, 0x800A0006U);
}

TEST_F(MessageBoxTest, LanguagesAreSixteenBits)
{
    for (const auto& [language, passed] :
         {std::pair{1031, 1031UL}, {0, 0UL}, {0xFFFF, 0xFFFFFFFFUL}, {0x10407, 0x407UL}}) {
        box_.Put(L"Language", language);
        EXPECT_EQ(Show(L"text").language, passed);
    }
}

// The platform's own box, answered by a user.
TEST(MessageBoxOnScreen, ReturnsThePressedButton)
{
    ScriptObject box = ScriptObject::Make(L"MessageBox");
    box.Put(L"Language", 1031);
    box.Put(L"Buttons", 3);
    Robot robot(ClickButton(L"Frage", L"Nein"));
    EXPECT_EQ(box.Call(L"Show", L"Wirklich?", Missing{}, L"Frage"), short{IDNO});
}

// One that has no way to cancel ends all the same when nobody waits for it.
TEST(MessageBoxOnScreen, EndsWhenItsClientsAreGone)
{
    ScriptObject box = ScriptObject::Make(L"MessageBox");
    LastClient client(box.Dispatch());
    Robot robot([&](Desk& desk) {
        const HWND window = desk.Window(L"Alone");
        client.Die();
        desk.WaitUntilGone(window);
    });
    box.Call(L"Show", L"Yes or no?", MB_YESNO, L"Alone");
    EXPECT_TRUE(robot.Finish());
}

} // namespace
} // namespace quill::test
