#include <gtest/gtest.h>

#include <cderr.h>

#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"Files to choose from";

class FileSelectionTest : public testing::Test {
protected:
    FileSelectionTest()
    {
        files_.Put(L"DlgTitle", kTitle);
        files_.Put(L"Directory", folder_.Path());
    }

    // Shows the dialog; types into its name field and presses Enter, or presses Esc.
    long Choose(int mode, const wchar_t* typed)
    {
        Robot robot([&](Desk& desk) {
            const HWND name = desk.Control(kTitle, L"Edit");
            if (!typed) {
                desk.Press(VK_ESCAPE);
                return;
            }
            // A dialog that is still reading its folder may write a name of its own into the field;
            // a user would type again.
            ULONGLONG next = 0;
            desk.WaitFor(L"the name to be typed", [&] {
                if (Desk::TextOf(name) == typed) return true;
                if (GetTickCount64() < next) return false;
                if (wcslen(typed) > 100) { // as if pasted
                    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(typed));
                } else {
                    desk.Click(name);
                    desk.Press('A', {VK_CONTROL});
                    desk.Type(typed);
                }
                next = GetTickCount64() + 1000;
                return false;
            });
            desk.Click(name);
            desk.Press(VK_RETURN);
        });
        const long count = files_.Call(L"Dialog", mode).Number();
        EXPECT_TRUE(robot.Finish());
        return count;
    }

    const TemporaryFolder folder_;
    ScriptObject files_ = ScriptObject::Make(L"FileSelection");
};

TEST_F(FileSelectionTest, OneFile)
{
    folder_.Write(L"a.txt", "");
    EXPECT_EQ(Choose(0, L"a.txt"), 1);
    EXPECT_EQ(files_.Get(L"Directory"), folder_.Path() + L'\\');
    EXPECT_EQ(files_.Get(L"FileName"), L"a.txt");
    EXPECT_EQ(files_.Get(L"ErrorCode"), 0);

    EXPECT_EQ(Choose(0, nullptr), 0);
    EXPECT_EQ(files_.Get(L"ErrorCode"), -1);
    EXPECT_EQ(files_.Get(L"FileName"), L"a.txt") << "as before";
}

TEST_F(FileSelectionTest, AFileToSave)
{
    files_.Put(L"FileExtension", L"log");
    EXPECT_EQ(Choose(1, L"new"), 1);
    EXPECT_EQ(files_.Get(L"FileName"), L"new.log");
    EXPECT_EQ(files_.Get(L"FileExtension"), L"log");
}

TEST_F(FileSelectionTest, SeveralFiles)
{
    for (const wchar_t* name : {L"a.txt", L"b.txt", L"c.txt"})
        folder_.Write(name, "");
    EXPECT_EQ(Choose(2, L"\"a.txt\" \"b.txt\""), 2);
    EXPECT_EQ(files_.Get(L"Directory"), folder_.Path() + L'\\');
    EXPECT_EQ(files_.Get(L"FileName"), std::wstring(L"a.txt\0b.txt\0", 12));

    files_.Put(L"Convert", true);
    files_.Put(L"FileName", L"");
    EXPECT_EQ(Choose(2, L"\"a.txt\" \"b.txt\" \"c.txt\""), 3);
    EXPECT_EQ(files_.Get(L"FileName"), L"a.txt\r\nb.txt\r\nc.txt\r\n");

    files_.Put(L"FileName", L"");
    EXPECT_EQ(Choose(2, L"b.txt"), 1) << "one of several";
    EXPECT_EQ(files_.Get(L"Directory"), folder_.Path() + L'\\');
    EXPECT_EQ(files_.Get(L"FileName"), L"b.txt");
}

// A selection that has no room is an error, never a cut name.
TEST_F(FileSelectionTest, TooManyFilesForTheRoom)
{
    std::wstring typed;
    for (int number = 0; number < 12; ++number) {
        const std::wstring name = std::wstring(50, static_cast<wchar_t>(L'a' + number)) + L".txt";
        folder_.Write(name, "");
        typed += L'"' + name + L"\" ";
    }
    files_.Put(L"FileNumber", 2); // room for 520 characters
    EXPECT_EQ(Choose(2, typed.c_str()), 0);
    EXPECT_EQ(files_.Get(L"ErrorCode"), static_cast<int>(FNERR_BUFFERTOOSMALL));
    EXPECT_EQ(files_.Get(L"FileName"), L"");
    files_.Put(L"FileNumber", 3);
    EXPECT_EQ(Choose(2, typed.c_str()), 12);
}

TEST_F(FileSelectionTest, InvalidModesAndNames)
{
    const ScriptError invalid{0x80040353, L"Quill.FileSelection",
                              L"Mode parameter: Invalid argument."};
    for (int mode : {-1, 3, 32767})
        EXPECT_EQ(ErrorOf([&] { files_.Call(L"Dialog", mode); }), invalid);
    files_.Put(L"ErrorLevel", 0);
    files_.Put(L"ErrorLevel", 2);
    EXPECT_EQ(files_.Get(L"ErrorLevel"), 0);
    EXPECT_EQ(files_.Call(L"Dialog", 3), 0);
    EXPECT_EQ(files_.Get(L"ErrorCode"), 0) << "as before";

    files_.Put(L"FileName", std::wstring(261, L'x'));
    EXPECT_EQ(ErrorOf([&] { files_.Call(L"Dialog", 0); }).number, 0x800A0005U);
}

TEST_F(FileSelectionTest, FiltersFromArraysAndText)
{
    const std::wstring list(L"Text\0*.txt\0\0", 12);
    for (LONG lower : {0L, 1L, -5L}) {
        Variant array;
        V_VT(&array) = VT_ARRAY | VT_BSTR;
        V_ARRAY(&array) = SafeArrayCreateVector(VT_BSTR, lower, 2);
        for (const wchar_t* text : {L"Text", L"*.txt"}) {
            const Bstr element = MakeBstr(text);
            SafeArrayPutElement(V_ARRAY(&array), &lower, element.get());
            ++lower;
        }
        files_.Put(L"Filter", L"");
        files_.Call(L"SetFilter", &array);
        EXPECT_EQ(files_.Get(L"Filter"), list);
    }
    files_.Call(L"SetFilter", 1);
    files_.Call(L"SetFilter", Variant());
    EXPECT_EQ(files_.Get(L"Filter"), list) << "as before";
    files_.Call(L"SetFilter", L"A|B\r\n*.a");
    EXPECT_EQ(files_.Get(L"Filter"), L"A|B\r\n*.a");
    files_.Put(L"Convert", true);
    files_.Call(L"SetFilter", L"Text\r\n*.txt");
    EXPECT_EQ(files_.Get(L"Filter"), list.substr(0, 11));
    files_.Put(L"Filter", L"Text\r\n*.txt\r\n");
    EXPECT_EQ(files_.Get(L"Filter"), list);
}

// The filter decides what is shown, also where it has no end or no pattern.
TEST_F(FileSelectionTest, FiltersWithoutAnEnd)
{
    folder_.Write(L"a.txt", "");
    for (const std::wstring& filter :
         {std::wstring(L"Text\0*.txt", 10), std::wstring(L"Text only")}) {
        files_.Put(L"Filter", filter);
        files_.Put(L"FileName", L"");
        EXPECT_EQ(Choose(0, L"a.txt"), 1);
    }
}

} // namespace
} // namespace quill::test
