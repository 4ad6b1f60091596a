#include <gtest/gtest.h>

#include <tuple>

#include "core/Apartment.h"
#include "dialogs/TaskDialog.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/Values.h"

namespace quill::test {
namespace {

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
    TaskDialogTest() : real_(Seam<TaskDialogFunctions>())
    {
        Seam<TaskDialogFunctions>().showIndirect = [this](const TASKDIALOGCONFIG* config,
                                                          int* pressed, int* radio, BOOL* checked) {
            flags_ = static_cast<LONG>(config->dwFlags);
            icon_ = IconText(config->pszMainIcon);
            footerIcon_ = IconText(config->pszFooterIcon);
            module_ = config->hInstance != nullptr;
            buttons_ = Captions(config->cButtons, config->pButtons, 101);
            radioButtons_ = Captions(config->cRadioButtons, config->pRadioButtons, 1);
            title_ = config->pszWindowTitle;
            nullTexts_ = !config->pszVerificationText && !config->pszExpandedInformation &&
                         !config->pszFooter && !config->pszExpandedControlText &&
                         !config->pszCollapsedControlText;
            *pressed = pressed_;
            *radio = 2;
            *checked = TRUE;
            return result_;
        };
        Seam<TaskDialogFunctions>().show = [this](HWND, HINSTANCE, PCWSTR title, PCWSTR instruction,
                                                  PCWSTR content, int buttons, PCWSTR icon,
                                                  int* pressed) {
            simple_ = {title, instruction, content ? content : L"(none)", std::to_wstring(buttons),
                       IconText(icon)};
            *pressed = pressed_;
            return result_;
        };
    }
    ~TaskDialogTest() override { Seam<TaskDialogFunctions>() = real_; }

    TaskDialogFunctions real_;
    ScriptObject dialog_ = ScriptObject::Make(L"TaskDialog");
    int pressed_ = IDOK;
    HRESULT result_ = S_OK;

    LONG flags_ = 0;
    std::wstring icon_;
    std::wstring footerIcon_;
    bool module_ = false;
    std::wstring title_ = L"none";
    bool nullTexts_ = false;
    std::vector<std::wstring> buttons_;
    std::vector<std::wstring> radioButtons_;
    std::vector<std::wstring> simple_;
};

TEST_F(TaskDialogTest, PropertiesKeepWhatTheyCanUse)
{
    const std::tuple<const wchar_t*, int, int> cases[] = {
        {L"Icon", -9, -9},       {L"Icon", 5, -9},        {L"Icon", -10, -9},
        {L"Icon", 32518, 32518}, {L"Icon", 32519, 32518}, {L"Options", -1, 0xA0C8}};
    for (const auto& [name, value, stored] : cases) {
        dialog_.Put(name, value);
        EXPECT_EQ(dialog_.Get(name), stored) << Narrow(name) << ' ' << value;
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
    EXPECT_EQ(title_, L"");
    EXPECT_TRUE(nullTexts_) << "what was never set is no empty label";
    EXPECT_EQ(dialog_.Get(L"RadioButtonSelected"), 2);
    EXPECT_EQ(dialog_.Get(L"VerificationChecked"), true);

    dialog_.Put(L"RadioButtonSelected", 0);
    dialog_.Put(L"CustomButtonStyle", 1); // also without buttons
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

    dialog_.Put(L"CustomButtons", Variant(MakeArray(VT_I4, 2)));
    dialog_.Put(L"RadioButtons", L"no array");
    dialog_.Call(L"ShowEx");
    EXPECT_EQ(buttons_, (Texts{L"0", L"0"}));
    EXPECT_EQ(radioButtons_, Texts());
}

TEST_F(TaskDialogTest, ErrorCodeHasTheClassicNumbers)
{
    const ScriptObject other = ScriptObject::Make(L"Profile");
    for (const auto& [captions, number] : {std::pair<Arg, int>{ScriptArray(OfType(VT_NULL)), 94},
                                           {Square(), 9},
                                           {ScriptArray(other.Dispatch()), 13}}) {
        dialog_.Put(L"CustomButtons", captions.value);
        EXPECT_EQ(dialog_.Call(L"ShowEx"), short{0});
        EXPECT_EQ(dialog_.Get(L"ErrorCode"), number);
    }
    dialog_.Put(L"CustomButtons", 1);
    Seam<TaskDialogFunctions>() = {nullptr, nullptr};
    for (const wchar_t* method : {L"Show", L"ShowEx"}) {
        EXPECT_EQ(dialog_.Call(method), short{0});
        EXPECT_EQ(dialog_.Get(L"ErrorCode"), 453) << "this Windows has no task dialog";
    }
}

TEST_F(TaskDialogTest, IconsComeFromTheSystemOrFromAModule)
{
    const struct {
        const wchar_t *file, *id, *footerId, *icon, *footer;
        bool module;
    } cases[] = {
        {L"", L"", L"", L"#65533", L"#32515", false},
        {L"shell32.dll", L"#5", L"#6", L"#5", L"#6", true},
        {L"shell32.dll", L"MAIN", L"", L"MAIN", L"#32515", true},
        {L"no such file.dll", L"#9", L"", L"MAIN", L"#32515", false}, // as before
        {L"shell32.dll", L"", L"", L"#65533", L"#32515", false},
    };
    dialog_.Put(L"Icon", -3);
    dialog_.Put(L"FooterIcon", 32515);
    for (const auto& [file, id, footerId, icon, footer, module] : cases) {
        SCOPED_TRACE(Narrow(file) + Narrow(id));
        dialog_.Put(L"IconResFile", file);
        dialog_.Put(L"IconResID", id);
        dialog_.Put(L"FooterIconResID", footerId);
        dialog_.Call(L"ShowEx");
        EXPECT_EQ(icon_, icon);
        EXPECT_EQ(footerIcon_, footer);
        EXPECT_EQ(module_, module);
    }
}

} // namespace
} // namespace quill::test
