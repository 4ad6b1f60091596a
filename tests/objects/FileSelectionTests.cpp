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

} // namespace
} // namespace quill::test
