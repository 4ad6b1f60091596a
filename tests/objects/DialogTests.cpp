// What lines of a table cannot say of the selection dialogs: typed variables, and what stays in
// memory.
#include <gtest/gtest.h>

#include <atomic>
#include <tuple>

#include "dialogs/frmDTPick.h"
#include "fuzz/Held.h"
#include "gui/MessageHook.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"About you";

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

// What is freed without being overwritten. The platform's own memory is not looked at then.
std::atomic<int> freed;

int PasswordsIn(const void* block, size_t bytes)
{
    int found = 0;
    const auto* begin = static_cast<const wchar_t*>(block);
    const auto* end = begin + bytes / sizeof *begin;
    // What was freed or emptied has lost its beginning only.
    for (; end - begin >= ptrdiff_t{kPasswordLength / 2}; ++begin)
        found += IsPassword(begin, kPasswordLength / 2);
    return found;
}

int PasswordsInUse()
{
    HANDLE heaps[64];
    int found = 0;
    for (DWORD heap = GetProcessHeaps(64, heaps); heap-- > 0;) {
        PROCESS_HEAP_ENTRY block{};
        HeapLock(heaps[heap]);
        while (HeapWalk(heaps[heap], &block))
            if (block.wFlags & PROCESS_HEAP_ENTRY_BUSY)
                found += PasswordsIn(block.lpData, block.cbData);
        HeapUnlock(heaps[heap]);
    }
    return found;
}

LRESULT CALLBACK LookAtEnd(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR result,
                           DWORD_PTR)
{
    if (message == WM_DESTROY) *reinterpret_cast<int*>(result) = PasswordsInUse();
    return DefSubclassProc(edit, message, wParam, lParam);
}

TEST(MInputBox, PasswordsDoNotStayInMemory)
{
    ScriptObject box = ScriptObject::Make(L"MInputBox");
    box.Put(L"Title", kTitle);
    box.Put(L"InputFlags", 1);
    fuzz::CountTaskBlocks();
    fuzz::onFree = [](const void* block, size_t bytes) { freed += PasswordsIn(block, bytes); };
    for (const WORD key : {WORD{VK_ESCAPE}, WORD{VK_RETURN}}) {
        Variant texts;
        int atEnd = -1; // of the text box
        Robot robot([&](Desk& desk) {
            const HWND edit = desk.Control(kTitle, L"Edit");
            desk.Do([&] { InstallHook(edit, &atEnd, LookAtEnd); });
            for (size_t index = 0; index < kPasswordLength; ++index)
                desk.Press(0, 0, PasswordUnit(index));
            desk.Press(key);
        });
        const bool accepted{box.Call(L"InputM", &texts)};
        EXPECT_EQ(accepted, key == VK_RETURN);
        // The result is on its way to the script, and is the script's then.
        EXPECT_EQ(atEnd, accepted);
        EXPECT_EQ(PasswordsInUse(), accepted);
        EXPECT_EQ(freed, 0);
        if (!accepted) continue;
        Variant values; // not by name, for which the platform makes copies
        ASSERT_HRESULT_SUCCEEDED(static_cast<_MInputBox*>(box.Dispatch())->get_Values(&values));
        EXPECT_TRUE(IsPassword(V_BSTR(&DataOf<Variant>(*V_ARRAY(&values))[0]), 0));
        EXPECT_EQ(freed, 0);
        fuzz::onFree = nullptr; // the script's own strings
    }
}

TEST(DTPick, TakesTypedVariables)
{
    constexpr DATE kStart = 43890.5;
    DATE typed = kStart;
    ScriptObject picker = ScriptObject::Make(L"DTPick");
    for (const Variant& date : {Reference(VT_DATE, &typed), Variant::OfDate(kStart)}) {
        Robot robot([](Desk& desk) { desk.Act(L"SysDateTimePick32 {RIGHT}{UP}{ENTER}"); });
        EXPECT_TRUE(picker.Call(L"Selection", date));
    }
    EXPECT_GT(typed, kStart + 0.5);
}

TEST(frmDTPick, HandlesTellWhetherThePickersAreThere)
{
    for (const auto& [mode, date, time, made] : {std::tuple{PickMode::Date, 4U, 0U, true},
                                                 {PickMode::Time, 0U, 4U, true},
                                                 {PickMode::Time, 4U, 0U, false},
                                                 {PickMode::Both, 6U, 3U, true},
                                                 {PickMode::Both, 4U, 3U, false}})
        EXPECT_EQ(frmDTPick::PickersMade(mode, date, time), made) << date << ' ' << time;
}

} // namespace
} // namespace quill::test
