#include <gtest/gtest.h>

#include "dialogs/TaskDialog.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

std::wstring IconText(PCWSTR icon)
{
    return IS_INTRESOURCE(icon) ? L'#' + std::to_wstring(reinterpret_cast<ULONG_PTR>(icon)) : icon;
}

std::vector<std::wstring> Captions(UINT count, const TASKDIALOG_BUTTON* buttons, int first)
{
    std::vector<std::wstring> captions;
    for (UINT index = 0; index < count; ++index) {
        EXPECT_EQ(buttons[index].nButtonID, first + static_cast<int>(index));
        captions.emplace_back(buttons[index].pszButtonText);
    }
    return captions;
}

class TaskDialogTest : public testing::Test {
protected:
    TaskDialogTest() : real_(TaskDialogsOfThread())
    {
        TaskDialogsOfThread().showIndirect = [this](const TASKDIALOGCONFIG* config, int* pressed,
                                                    int* radio, BOOL* checked) {
            flags_ = static_cast<LONG>(config->dwFlags);
            icon_ = IconText(config->pszMainIcon);
            footerIcon_ = IconText(config->pszFooterIcon);
            module_ = config->hInstance != nullptr;
            buttons_ = Captions(config->cButtons, config->pButtons, 101);
            radioButtons_ = Captions(config->cRadioButtons, config->pRadioButtons, 1);
            nullTexts_ = !config->pszVerificationText && !config->pszExpandedInformation &&
                         !config->pszFooter && !config->pszExpandedControlText &&
                         !config->pszCollapsedControlText;
            *pressed = pressed_;
            *radio = 2;
            *checked = TRUE;
            return result_;
        };
        TaskDialogsOfThread().show = [this](HWND, HINSTANCE, PCWSTR title, PCWSTR instruction,
                                            PCWSTR content, int buttons, PCWSTR icon,
                                            int* pressed) {
            simple_ = {title, instruction, content ? content : L"(none)", std::to_wstring(buttons),
                       IconText(icon)};
            *pressed = pressed_;
            return result_;
        };
    }
    ~TaskDialogTest() override { TaskDialogsOfThread() = real_; }

    TaskDialogFunctions real_;
    ScriptObject dialog_ = ScriptObject::Make(L"TaskDialog");
    int pressed_ = IDOK;
    HRESULT result_ = S_OK;

    LONG flags_ = 0;
    std::wstring icon_;
    std::wstring footerIcon_;
    bool module_ = false;
    bool nullTexts_ = false;
    std::vector<std::wstring> buttons_;
    std::vector<std::wstring> radioButtons_;
    std::vector<std::wstring> simple_;
};

TEST_F(TaskDialogTest, PropertiesKeepWhatTheyCanUse)
{
    struct Case {
        const wchar_t* name;
        int value;
        int stored;
    };
    const Case cases[] = {{L"Icon", -9, -9},
                          {L"Icon", 5, -9},
                          {L"Icon", -10, -9},
                          {L"Icon", 32518, 32518},
                          {L"Icon", 32519, 32518},
                          {L"FooterIcon", -1, -1},
                          {L"FooterIcon", 1, -1},
                          {L"CustomButtonStyle", 2, 2},
                          {L"CustomButtonStyle", 3, 2},
                          {L"Options", 0xFFFF, 0xA0C8},
                          {L"Options", -1, 0xA0C8}};
    for (const Case& c : cases) {
        dialog_.Put(c.name, c.value);
        EXPECT_EQ(dialog_.Get(c.name), c.stored) << Narrow(c.name) << ' ' << c.value;
    }
}

TEST_F(TaskDialogTest, ShowTakesOneTextOrTwo)
{
    using Texts = std::vector<std::wstring>;
    dialog_.Put(L"Buttons", 1);
    dialog_.Put(L"Title", L"title");
    dialog_.Put(L"Text", L"main");
    dialog_.Put(L"SubText", L"sub");
    dialog_.Put(L"Icon", -1);
    EXPECT_EQ(dialog_.Call(L"Show"), short{IDOK});
    EXPECT_EQ(simple_, (Texts{L"title", L"main", L"sub", L"1", L"#65535"}));
    dialog_.Call(L"Show", L"Saved", 6, L"other");
    EXPECT_EQ(simple_, (Texts{L"other", L"Saved", L"(none)", L"6", L"#65535"}));
    dialog_.Call(L"Show", std::wstring(L"Main\0Details", 12));
    EXPECT_EQ(simple_, (Texts{L"title", L"Main", L"Details", L"1", L"#65535"}));
    dialog_.Call(L"Show", std::wstring(L"Main\0", 5), Missing{}, std::wstring(300, L't'));
    EXPECT_EQ(simple_, (Texts{std::wstring(256, L't'), L"Main", L"(none)", L"1", L"#65535"}));
}

TEST_F(TaskDialogTest, FlagsAndAnswersGoBothWays)
{
    EXPECT_EQ(dialog_.Call(L"ShowEx"), short{IDOK});
    EXPECT_EQ(flags_, 0);
    EXPECT_TRUE(nullTexts_) << "what was never set is no empty label";
    EXPECT_EQ(dialog_.Get(L"RadioButtonSelected"), 2);
    EXPECT_EQ(dialog_.Get(L"VerificationChecked"), true);

    dialog_.Put(L"RadioButtonSelected", 0);
    dialog_.Put(L"CustomButtonStyle", 1);
    dialog_.Put(L"Options", 8);
    dialog_.Call(L"ShowEx");
    EXPECT_EQ(flags_, TDF_USE_COMMAND_LINKS | TDF_NO_DEFAULT_RADIO_BUTTON |
                          TDF_VERIFICATION_FLAG_CHECKED | TDF_ALLOW_DIALOG_CANCELLATION);

    result_ = E_INVALIDARG;
    dialog_.Put(L"RadioButtonSelected", 7);
    EXPECT_EQ(dialog_.Call(L"ShowEx"), short{0});
    EXPECT_EQ(dialog_.Get(L"ErrorCode"), static_cast<int>(E_INVALIDARG));
    EXPECT_EQ(dialog_.Get(L"RadioButtonSelected"), 7) << "a failure changes nothing";
}

TEST_F(TaskDialogTest, CaptionsComeFromZeroBasedArrays)
{
    using Texts = std::vector<std::wstring>;
    Variant buttons = ScriptArray(L"first", L"second");
    dialog_.Put(L"CustomButtons", &buttons); // a script's variable
    dialog_.Put(L"RadioButtons", ScriptArray(L"a", L"b", L"c"));
    dialog_.Call(L"ShowEx");
    EXPECT_EQ(buttons_, (Texts{L"first", L"second"}));
    EXPECT_EQ(radioButtons_, (Texts{L"a", L"b", L"c"}));

    dialog_.Put(L"CustomButtons", StartingAt(1, ScriptArray(L"first")));
    dialog_.Put(L"RadioButtons", MakeStringArray(std::vector<std::wstring>(40, L"x"), true));
    dialog_.Call(L"ShowEx");
    EXPECT_EQ(buttons_, Texts());
    EXPECT_EQ(radioButtons_, Texts(32, L"x"));

    Variant numbers; // a typed array
    V_VT(&numbers) = VT_ARRAY | VT_I4;
    V_ARRAY(&numbers) = SafeArrayCreateVector(VT_I4, 0, 2);
    dialog_.Put(L"CustomButtons", numbers);
    dialog_.Put(L"RadioButtons", L"no array");
    dialog_.Call(L"ShowEx");
    EXPECT_EQ(buttons_, (Texts{L"0", L"0"}));
    EXPECT_EQ(radioButtons_, Texts());
}

TEST_F(TaskDialogTest, ErrorCodeHasTheClassicNumbers)
{
    Variant null;
    V_VT(&null) = VT_NULL;
    Variant nulls = ScriptArray(L"x");
    LONG index = 0;
    SafeArrayPutElement(V_ARRAY(&nulls), &index, &null);
    Variant plane;
    SAFEARRAYBOUND bounds[2]{{2, 0}, {2, 0}};
    V_VT(&plane) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&plane) = SafeArrayCreate(VT_VARIANT, 2, bounds);
    const ScriptObject other = ScriptObject::Make(L"Profile");
    Variant objects = ScriptArray(L"x");
    Variant object(other.Dispatch());
    SafeArrayPutElement(V_ARRAY(&objects), &index, &object);

    for (const auto& [captions, number] : {std::pair{&nulls, 94}, {&plane, 9}, {&objects, 13}}) {
        dialog_.Put(L"CustomButtons", *captions);
        EXPECT_EQ(dialog_.Call(L"ShowEx"), short{0});
        EXPECT_EQ(dialog_.Get(L"ErrorCode"), number);
    }
    dialog_.Put(L"CustomButtons", 1);
    dialog_.Put(L"IconResFile", L"shell32.dll");
    dialog_.Put(L"IconResID", L"#five");
    EXPECT_EQ(dialog_.Call(L"Show", L"text"), short{0});
    EXPECT_EQ(dialog_.Get(L"ErrorCode"), 13);

    dialog_.Put(L"IconResFile", L"");
    TaskDialogsOfThread() = {};
    for (const wchar_t* method : {L"Show", L"ShowEx"}) {
        EXPECT_EQ(dialog_.Call(method), short{0});
        EXPECT_EQ(dialog_.Get(L"ErrorCode"), 453) << "this Windows has no task dialog";
    }
}

TEST_F(TaskDialogTest, IconsComeFromTheSystemOrFromAModule)
{
    struct Case {
        const char* what;
        const wchar_t* file;
        const wchar_t* id;
        const wchar_t* footerId;
        const wchar_t* icon;
        const wchar_t* footer;
        bool module;
    };
    const Case cases[] = {
        {"the system's", L"", L"", L"", L"#65533", L"#32515", false},
        {"both named", L"shell32.dll", L"#5", L"#6", L"#5", L"#6", true},
        {"main named", L"shell32.dll", L"MAIN", L"", L"MAIN", L"#32515", true},
        {"no such module: as before", L"no such file.dll", L"#9", L"", L"MAIN", L"#32515", false},
        {"no names", L"shell32.dll", L"", L"", L"#65533", L"#32515", false},
    };
    dialog_.Put(L"Icon", -3);
    dialog_.Put(L"FooterIcon", 32515);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        dialog_.Put(L"IconResFile", c.file);
        dialog_.Put(L"IconResID", c.id);
        dialog_.Put(L"FooterIconResID", c.footerId);
        dialog_.Call(L"ShowEx");
        EXPECT_EQ(icon_, c.icon);
        EXPECT_EQ(footerIcon_, c.footer);
        EXPECT_EQ(module_, c.module);
    }
}

// The platform's own dialog, answered by a user: radio button, check box, link.
TEST(TaskDialogOnScreen, ReadsTheAnswersBack)
{
    ScriptObject dialog = ScriptObject::Make(L"TaskDialog");
    dialog.Put(L"Title", L"A task");
    dialog.Put(L"Text", L"What now?");
    dialog.Put(L"CustomButtons", ScriptArray(L"Go on", L"Stop"));
    dialog.Put(L"CustomButtonStyle", 1);
    dialog.Put(L"RadioButtons", ScriptArray(L"slow", L"fast"));
    dialog.Put(L"RadioButtonSelected", 0);
    dialog.Put(L"VerificationLabel", L"always");
    dialog.Put(L"VerificationChecked", true);
    Robot robot([](Desk& desk) {
        desk.Click(desk.Control(L"A task", L"Button", L"fast"));
        desk.Click(desk.Control(L"A task", L"Button", L"always"));
        desk.Click(desk.Control(L"A task", L"Button", L"Stop"));
    });
    EXPECT_EQ(dialog.Call(L"ShowEx"), short{102});
    EXPECT_EQ(dialog.Get(L"ErrorCode"), 0);
    EXPECT_EQ(dialog.Get(L"RadioButtonSelected"), 2);
    EXPECT_EQ(dialog.Get(L"VerificationChecked"), false);
}

} // namespace
} // namespace quill::test
