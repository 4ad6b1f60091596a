#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// Holds the clipboard as another program does, on a thread with a window of its own.
class Holder {
public:
    explicit Holder(DWORD milliseconds)
        : thread_([this, milliseconds] {
              const Owned<HWND, DestroyWindow> window(CreateWindowW(
                  L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
              while (!OpenClipboard(window.get()))
                  Sleep(1);
              SetEvent(holds_.get());
              WaitForSingleObject(released_.get(), milliseconds);
              CloseClipboard();
          })
    {
        WaitForSingleObject(holds_.get(), INFINITE);
    }
    ~Holder()
    {
        SetEvent(released_.get());
        thread_.join();
    }

private:
    const Event holds_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const Event released_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::thread thread_;
};

class ClipboardTest : public testing::Test {
protected:
    ClipboardTest() { clipboard_.Put(L"UseUnicode", true); }

    // Half a second, and not much more even where the processor is busy.
    template <class Action>
    static void ExpectPatience(Action action)
    {
        const ULONGLONG begin = GetTickCount64();
        action();
        const ULONGLONG taken = GetTickCount64() - begin;
        EXPECT_TRUE(taken >= 480 && taken < 2'500) << taken;
    }

    ScriptObject clipboard_ = ScriptObject::Make(L"Clipboard");
};

TEST_F(ClipboardTest, WaitsHalfASecondForAnotherProgram)
{
    clipboard_.Put(L"Text", L"old");
    {
        const Holder shortly(200);
        EXPECT_EQ(clipboard_.Get(L"Text"), L"old");
    }
    {
        const Holder shortly(200);
        clipboard_.Put(L"Text", L"new");
    }
    {
        const Holder long_(20'000);
        ExpectPatience([&] { EXPECT_EQ(clipboard_.Get(L"Text"), L""); });
        ExpectPatience([&] { clipboard_.Put(L"Text", L"lost"); });
    }
    EXPECT_EQ(clipboard_.Get(L"Text"), L"new");
}

LRESULT CALLBACK RefuseOwners(int code, WPARAM wParam, LPARAM lParam)
{
    const auto window = reinterpret_cast<HWND>(wParam);
    const bool owner = code == HCBT_CREATEWND && Desk::ClassOf(window) == L"quill.Clipboard";
    return owner ? 1 : CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST_F(ClipboardTest, AWriteThatFailsIsQuiet)
{
    clipboard_.Put(L"Text", L"old");
    const HHOOK hook = SetWindowsHookExW(WH_CBT, RefuseOwners, nullptr, GetCurrentThreadId());
    EXPECT_EQ(ErrorOf([&] { clipboard_.Put(L"Text", L"new"); }), ScriptError{});
    UnhookWindowsHookEx(hook);
    EXPECT_EQ(clipboard_.Get(L"Text"), L"old");
}

TEST_F(ClipboardTest, LeavesWhatOtherProgramsExpect)
{
    for (bool unicode : {true, false}) {
        clipboard_.Put(L"UseUnicode", unicode);
        clipboard_.Put(L"Text", L"caf\u00E9");
        // Nobody has to ask this program for anything any more.
        EXPECT_EQ(GetClipboardOwner(), nullptr);
        ASSERT_TRUE(OpenClipboard(nullptr));
        EXPECT_EQ(EnumClipboardFormats(0) == CF_UNICODETEXT, unicode);
        if (unicode) {
            EXPECT_EQ(GlobalSize(GetClipboardData(CF_UNICODETEXT)), 20u)
                << "room for twice the text";
        }
        EXPECT_STREQ(static_cast<const char*>(GlobalLock(GetClipboardData(CF_TEXT))), "caf\xE9");
        EXPECT_STREQ(static_cast<const wchar_t*>(GlobalLock(GetClipboardData(CF_UNICODETEXT))),
                     L"caf\u00E9");
        EXPECT_EQ(*static_cast<const LCID*>(GlobalLock(GetClipboardData(CF_LOCALE))),
                  GetSystemDefaultLCID());
        CloseClipboard();
        clipboard_.Put(L"Text", L"");
        EXPECT_TRUE(IsClipboardFormatAvailable(CF_TEXT)); // an empty text is one
        EXPECT_EQ(clipboard_.Get(L"Text"), L"");
    }
}

} // namespace
} // namespace quill::test
