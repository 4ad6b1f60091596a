#include "sysinfo/Clipboard.h"

#include <algorithm>
#include <cstring>

#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "core/Text.h"

namespace quill {

namespace {

constexpr ULONGLONG kPatience = 500; // milliseconds, all attempts together
constexpr ULONGLONG kPause = 10;     // between two of them

using GlobalBlock = Owned<HGLOBAL, GlobalFree>;
using GlobalBlockLock = Owned<HGLOBAL, GlobalUnlock>;

// The clipboard, open for this program alone as long as the object lives.
class OpenedClipboard {
public:
    // Calls that come in while another program holds the clipboard are served.
    explicit OpenedClipboard(HWND owner)
    {
        const ULONGLONG end = GetTickCount64() + kPatience;
        while (!(open_ = OpenClipboard(owner) != FALSE)) {
            const ULONGLONG now = GetTickCount64();
            if (now >= end || !WaitForMessages(static_cast<DWORD>(std::min(kPause, end - now))))
                break;
        }
    }
    ~OpenedClipboard()
    {
        if (open_) CloseClipboard();
    }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;

    explicit operator bool() const noexcept { return open_; }

private:
    bool open_;
};

// A block of `size` bytes that begins with these and goes on with zeros; null when there is not
// enough memory.
GlobalBlock MakeBlock(const void* bytes, size_t count, size_t size) noexcept
{
    GlobalBlock block(GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, size));
    void* data = block ? GlobalLock(block.get()) : nullptr;
    if (!data) return nullptr;
    const GlobalBlockLock locked(block.get());
    std::memcpy(data, bytes, count);
    return block;
}

// Null when the platform refuses.
Owned<HWND, DestroyWindow> MakeOwner()
{
    try {
        return Owned<HWND, DestroyWindow>(
            CreateHiddenWindow(L"quill.Clipboard", DefWindowProcW, nullptr, true));
    } catch (const AutomationError&) {
        return nullptr;
    }
}

// The clipboard owns a block that it has taken.
void Place(UINT format, GlobalBlock block) noexcept
{
    if (block && SetClipboardData(format, block.get())) static_cast<void>(block.release());
}

} // namespace

CREATABLE(Clipboard)

std::wstring Clipboard::Text() const
{
    const UINT format = unicode_ ? CF_UNICODETEXT : CF_TEXT;
    if (!IsClipboardFormatAvailable(format)) return {};
    const OpenedClipboard clipboard(nullptr);
    const HGLOBAL block = clipboard ? GetClipboardData(format) : nullptr;
    const void* data = block ? GlobalLock(block) : nullptr;
    if (!data) return {};
    const GlobalBlockLock locked(block);
    // The program that put it there may have forgotten the NUL at the end.
    const size_t size = GlobalSize(block);
    if (unicode_) {
        const auto* text = static_cast<const wchar_t*>(data);
        return {text, wcsnlen(text, size / sizeof *text)};
    }
    const auto* text = static_cast<const char*>(data);
    return FromAnsi({text, strnlen(text, size)});
}

void Clipboard::SetText(const std::wstring& text) const
{
    GlobalBlock block;
    GlobalBlock locale;
    if (unicode_) {
        const size_t size = (text.size() + 1) * sizeof(wchar_t);
        // Kept as published: twice the size.
        block = MakeBlock(text.c_str(), size, 2 * size);
    } else {
        const std::string ansi = ToAnsi(text);
        block = MakeBlock(ansi.c_str(), ansi.size() + 1, ansi.size() + 1);
        // Without it, readers of Unicode text would get the bytes by the code page of the user's
        // keyboard. Where the code page is UTF-8, there is no locale for it.
        const LCID system = GetSystemDefaultLCID();
        if (GetACP() != CP_UTF8) locale = MakeBlock(&system, sizeof system, sizeof system);
    }
    // The platform wants an owner for what is emptied and filled. It is gone when the call is over,
    // so that no program has to wait for our answer.
    const auto owner = MakeOwner();
    if (!owner) return;
    const OpenedClipboard clipboard(owner.get());
    if (!clipboard || !EmptyClipboard()) return;
    if (locale) Place(CF_LOCALE, std::move(locale));
    Place(unicode_ ? CF_UNICODETEXT : CF_TEXT, std::move(block));
}

} // namespace quill
