#include <gtest/gtest.h>

#include <bit>

#include "core/Apartment.h"
#include "dialogs/frmDrives.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"Where to";

std::wstring Entry(HWND list, int index)
{
    wchar_t text[300] = L"";
    SendMessageW(list, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
    return text;
}

std::wstring Chosen(HWND list)
{
    return Entry(list, static_cast<int>(SendMessageW(list, CB_GETCURSEL, 0, 0)));
}

// Names of drives for the length of a test: one is known, the others do not answer in time.
class SlowDrives {
public:
    SlowDrives()
    {
        Seam<DriveFunctions>().nameOf = [answer = answer_](const std::wstring& drive) {
            if (drive == L"C:") return std::wstring(L"Work");
            WaitForSingleObject(answer->get(), Desk::kDeadline);
            return std::wstring(L"late");
        };
    }
    ~SlowDrives()
    {
        SetEvent(answer_->get());
        Seam<DriveFunctions>() = former_;
    }

private:
    const DriveFunctions former_ = Seam<DriveFunctions>();
    std::shared_ptr<Event> answer_ =
        std::make_shared<Event>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
};

TEST(DriveList, ReturnsTheChosenDriveWithItsLabel)
{
    const SlowDrives slow;
    ScriptObject drives = ScriptObject::Make(L"DriveList");
    for (bool crop : {false, true}) {
        drives.Put(L"Crop", crop);
        Robot robot([](Desk& desk) {
            const HWND list = desk.Control(kTitle, L"ComboBox");
            EXPECT_EQ(static_cast<int>(SendMessageW(list, CB_GETCOUNT, 0, 0)),
                      std::popcount(GetLogicalDrives()));
            desk.WaitFor(L"the label", [&] { return Chosen(list) == L"C: [Work]"; });
            desk.Press(VK_RETURN); // the button has the focus
        });
        EXPECT_EQ(drives.Call(L"Selection", L"c:\\data", kTitle), crop ? L"C:" : L"C: [Work]");
    }
}

TEST(DriveList, BeginsWithTheDriveOfThePath)
{
    wchar_t folder[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, folder);
    ScriptObject drives = ScriptObject::Make(L"DriveList");
    for (const wchar_t* path :
         {L"z:\\", L"Z", L"", L"q:\\no\\such", L"\x4e2d", L"?", L"\\\\host\\share"}) {
        SCOPED_TRACE(Narrow(path));
        Robot robot([&](Desk& desk) {
            const HWND list = desk.Control(kTitle, L"ComboBox");
            EXPECT_EQ(Chosen(list)[0], *path == L'z' || *path == L'Z' ? L'Z' : folder[0]);
            desk.Close(desk.Window(kTitle));
        });
        EXPECT_EQ(drives.Call(L"Selection", path, kTitle), L"") << "the close box";
    }
}

TEST(DriveList, ShowsOneDialogAtATime)
{
    ScriptObject drives = ScriptObject::Make(L"DriveList");
    for (const wchar_t* info : {L"", L"Where shall it go?"}) {
        drives.Put(L"Info", info);
        std::wstring nested = L"not called";
        const DuringWait again(
            [&] { nested = drives.Call(L"Selection", L"c", L"Another").Text(); });
        Robot robot([&](Desk& desk) {
            const HWND window = desk.Window(kTitle);
            desk.Press(VK_ESCAPE); // means nothing here
            EXPECT_EQ(Desk::SizeOf(window).cy * 15, *info ? 2940 : 2100);
            desk.WaitFor(L"the second call", [&] { return nested.empty(); });
            desk.Close(window);
        });
        EXPECT_EQ(drives.Call(L"Selection", L"c", kTitle), L"");
    }
}

} // namespace
} // namespace quill::test
