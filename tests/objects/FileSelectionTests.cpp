#include <gtest/gtest.h>

#include <cderr.h>

#include "core/Apartment.h"
#include "core/Paths.h"
#include "dialogs/FileDialog.h"
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

    // Shows the dialog for several files; types into its name field and presses Enter.
    long Choose(const wchar_t* typed)
    {
        Robot robot([&](Desk& desk) {
            const HWND name = desk.Control(kTitle, L"Edit");
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
        const long count = files_.Call(L"Dialog", 2).Number();
        EXPECT_TRUE(robot.Finish());
        return count;
    }

    const TemporaryFolder folder_;
    ScriptObject files_ = ScriptObject::Make(L"FileSelection");
};

TEST_F(FileSelectionTest, SeveralFiles)
{
    for (const wchar_t* name : {L"a.txt", L"b.txt"})
        folder_.Write(name, "");
    EXPECT_EQ(Choose(L"\"a.txt\" \"b.txt\""), 2);
    EXPECT_EQ(files_.Get(L"Directory"), folder_.Path() + L'\\');
    EXPECT_EQ(files_.Get(L"FileName"), std::wstring(L"a.txt\0b.txt\0", 12));
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
    EXPECT_EQ(Choose(typed.c_str()), 0);
    EXPECT_EQ(files_.Get(L"ErrorCode"), static_cast<int>(FNERR_BUFFERTOOSMALL));
    EXPECT_EQ(files_.Get(L"FileName"), L"");
    files_.Put(L"FileNumber", 3);
    EXPECT_EQ(Choose(typed.c_str()), 12);
}

TEST_F(FileSelectionTest, FiltersFromArraysAndText)
{
    const std::wstring list(L"Text\0*.txt\0\0", 12);
    for (LONG lower : {0L, 1L, -5L}) {
        Variant array = StartingAt(lower, MakeStringArray({L"Text", L"*.txt"}, false));
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

// What the platform's dialog is asked for. It leaves another current directory.
class FileSelectionRequestTest : public FileSelectionTest {
protected:
    FileSelectionRequestTest() { Seam<FileDialogs>().show = Ask; }
    ~FileSelectionRequestTest() override { Seam<FileDialogs>() = {}; }

    static BOOL Ask(OPENFILENAMEW* dialog, bool)
    {
        shownFolder_ = dialog->lpstrInitialDir;
        shownExtension_ = dialog->lpstrDefExt ? dialog->lpstrDefExt : L"(none)";
        return !SetCurrentDirectoryW(L"C:\\windows");
    }

    static inline std::wstring shownFolder_, shownExtension_;
};

TEST_F(FileSelectionRequestTest, FolderAndExtensionAreThoseGiven)
{
    for (const wchar_t* given : {L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", L"\\\\server\\share",
                                 L"C:\\not there", L"", L"CONtent"}) {
        files_.Put(L"Directory", given);
        files_.Call(L"Dialog", 0);
        EXPECT_EQ(shownFolder_, given);
    }
    for (const wchar_t* device : {L"CON", L"\\\\.\\pipe\\x"}) {
        files_.Put(L"Directory", device);
        files_.Call(L"Dialog", 0);
        EXPECT_EQ(shownFolder_, L"");
    }
    EXPECT_EQ(shownExtension_, L"(none)");
    const std::wstring extension(259, L'x');
    files_.Put(L"FileExtension", extension);
    files_.Call(L"Dialog", 1);
    EXPECT_EQ(shownExtension_, extension);
}

// It belongs to the process: a dialog of another apartment may have changed it when one opens.
TEST_F(FileSelectionRequestTest, TheCurrentDirectoryComesBack)
{
    files_.Call(L"Dialog", 0);
    const std::wstring home = CurrentFolder();
    ASSERT_NE(home, L"C:\\windows");
    SetCurrentDirectoryW(L"C:\\windows");
    files_.Call(L"Dialog", 0);
    EXPECT_EQ(CurrentFolder(), home);
}

// The filter decides what is shown, also where it has no end or no pattern.
TEST_F(FileSelectionTest, FiltersWithoutAnEnd)
{
    folder_.Write(L"a.txt", "");
    for (const std::wstring& filter :
         {std::wstring(L"Text\0*.txt", 10), std::wstring(L"Text only")}) {
        files_.Put(L"Filter", filter);
        files_.Put(L"FileName", L"");
        EXPECT_EQ(Choose(L"a.txt"), 1);
    }
}

} // namespace
} // namespace quill::test
