#include "gui/OutputControls.h"

#include <algorithm>
#include <utility>

#include "core/Text.h"

namespace quill {

namespace {

// Lines that wait while the user drags a selection, in UTF-16 units.
constexpr size_t kMostPending = 1 << 20;

using Bitmap = Owned<HBITMAP, DeleteObject>;
using Device = Owned<HDC, DeleteDC>;

// Where the line begins that ends at `end`, the place behind its CR LF.
size_t BeginOfLine(const std::wstring& text, size_t end) noexcept
{
    const size_t content = end - kLineBreak.size();
    if (content < kLineBreak.size()) return 0;
    const size_t before = text.rfind(kLineBreak, content - kLineBreak.size());
    return before == std::wstring::npos ? 0 : before + kLineBreak.size();
}

} // namespace

OutputLabel::OutputLabel(Form& form, const TwipRect& place)
    : Label(form, place), PacedDisplay(Control::Window())
{
}

void OutputLabel::Append(const std::wstring& lines)
{
    text_ += lines;
    if (text_.size() > kMostOutput) {
        const size_t line = text_.find(kLineBreak, text_.size() - kOutputToKeep);
        text_.erase(0, line + kLineBreak.size());
    }
    Changed();
}

void OutputLabel::Clear()
{
    text_.clear();
    Changed();
}

void OutputLabel::Show()
{
    InvalidateRect(Window(), nullptr, FALSE);
    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, Window(), OBJID_CLIENT, CHILDID_SELF);
}

bool OutputLabel::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result)
{
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint;
        const HDC device = BeginPaint(Window(), &paint);
        Draw(device);
        EndPaint(Window(), &paint);
        return true;
    }
    case WM_PRINTCLIENT: Draw(reinterpret_cast<HDC>(wParam)); return true;
    case WM_ERASEBKGND:
        result = TRUE;
        return true; // drawn with the text, so that it never flickers
    case WM_GETTEXTLENGTH: result = static_cast<LRESULT>(text_.size()); return true;
    case WM_GETTEXT: result = CopyText(reinterpret_cast<wchar_t*>(lParam), wParam); return true;
    default: return false;
    }
}

void OutputLabel::OnDestroyed() noexcept
{
    std::wstring().swap(text_);
}

LRESULT OutputLabel::CopyText(wchar_t* buffer, size_t size) const noexcept
{
    if (size == 0) return 0;
    const size_t count = text_.copy(buffer, size - 1);
    buffer[count] = L'\0';
    return static_cast<LRESULT>(count);
}

void OutputLabel::Draw(HDC target) const
{
    constexpr UINT kFormat = DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX | DT_EXPANDTABS;
    RECT area{};
    GetClientRect(Window(), &area);
    const Bitmap bitmap(CreateCompatibleBitmap(target, area.right, area.bottom));
    const Device owned(CreateCompatibleDC(target));
    const HDC device = owned.get();
    SelectObject(device, bitmap.get());
    SelectObject(device, reinterpret_cast<HFONT>(Send(WM_GETFONT)));
    const LRESULT brush =
        SendMessageW(GetParent(Window()), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(device),
                     reinterpret_cast<LPARAM>(Window()));
    FillRect(device, &area, reinterpret_cast<HBRUSH>(brush));

    struct Line {
        const wchar_t* text;
        int length;
        int height;
    };
    std::vector<Line> lines; // from the last one up
    TEXTMETRICW metrics{};
    GetTextMetricsW(device, &metrics);
    int height = 0;
    for (size_t end = text_.size(); end > 0 && height < area.bottom;) {
        const size_t begin = BeginOfLine(text_, end);
        Line line{text_.data() + begin, static_cast<int>(end - begin - kLineBreak.size()), 0};
        RECT box{0, 0, area.right, 0};
        if (line.length > 0) DrawTextW(device, line.text, line.length, &box, kFormat | DT_CALCRECT);
        line.height = std::max<int>(box.bottom, metrics.tmHeight);
        height += line.height;
        lines.push_back(line);
        end = begin;
    }
    RECT box{0, std::min<LONG>(0, area.bottom - height), area.right, 0};
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        box.bottom = box.top + line->height;
        DrawTextW(device, line->text, line->length, &box, kFormat);
        box.top = box.bottom;
    }
    BitBlt(target, 0, 0, area.right, area.bottom, device, 0, 0, SRCCOPY);
}

OutputBox::OutputBox(Form& form, const TwipRect& place)
    : TextBox(form, place, ES_MULTILINE | ES_READONLY | WS_VSCROLL), PacedDisplay(Control::Window())
{
    Send(EM_SETLIMITTEXT, 0); // as much as there can be
}

void OutputBox::Append(const std::wstring& lines)
{
    pending_ += lines;
    if (pending_.size() > kMostPending) Write();
    Changed();
}

void OutputBox::Clear()
{
    pending_.clear();
    SetText(L"");
    units_ = 0;
}

void OutputBox::FollowEnd(bool follow)
{
    Write(); // what was written before goes where it belonged
    follow_ = follow;
}

void OutputBox::Show()
{
    // While the user drags a selection, a change would lose its other end.
    if (GetCapture() == Window())
        Changed();
    else
        Write();
}

bool OutputBox::OnMessage(UINT message, WPARAM wParam, LPARAM, LRESULT& result)
{
    const bool reads = message == WM_GETTEXT || message == WM_GETTEXTLENGTH ||
                       (EM_GETSEL <= message && message <= EM_CHARFROMPOS);
    if (reads) Write();
    const bool control = GetKeyState(VK_CONTROL) < 0;
    if (message == WM_KEYDOWN && wParam == 'A' && control) {
        Send(EM_SETSEL, 0, -1);
        result = 0;
        return true;
    }
    // The native control closes the window by Esc, and beeps at Ctrl+A.
    return (message == WM_KEYDOWN && wParam == VK_ESCAPE) ||
           (message == WM_CHAR && (wParam == VK_ESCAPE || wParam == 1));
}

void OutputBox::OnDestroyed() noexcept
{
    std::wstring().swap(pending_);
}

// True when the caret stands before the character at this position.
bool OutputBox::CaretIsAt(DWORD position) const noexcept
{
    POINT caret{};
    if (GetFocus() != Window() || !GetCaretPos(&caret)) return false;
    const LRESULT place = Send(EM_POSFROMCHAR, position);
    return place != -1 && caret.x == static_cast<short>(LOWORD(place)) &&
           caret.y == static_cast<short>(HIWORD(place));
}

void OutputBox::Write()
{
    if (pending_.empty()) return;
    const std::wstring lines = std::exchange(pending_, {});
    DWORD first = 0;
    DWORD last = 0;
    Send(EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
    const bool backwards = first != last && CaretIsAt(first); // selected from its end upwards
    LRESULT top = Send(EM_GETFIRSTVISIBLELINE);

    Send(WM_SETREDRAW, FALSE);
    Send(EM_SETSEL, units_, static_cast<LPARAM>(units_));
    Send(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(lines.c_str()));
    units_ += lines.size();
    if (units_ > kMostOutput) {
        const LRESULT line = Send(EM_LINEFROMCHAR, units_ - kOutputToKeep) + 1;
        const auto removed = static_cast<DWORD>(Send(EM_LINEINDEX, static_cast<WPARAM>(line)));
        Send(EM_SETSEL, 0, static_cast<LPARAM>(removed));
        Send(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
        units_ -= removed;
        first -= std::min(first, removed);
        last -= std::min(last, removed);
        top -= std::min(top, line);
    }
    Send(EM_SETSEL, backwards ? last : first, static_cast<LPARAM>(backwards ? first : last));
    Send(EM_LINESCROLL, 0, top - Send(EM_GETFIRSTVISIBLELINE));
    if (follow_) Send(WM_VSCROLL, SB_BOTTOM);
    Send(WM_SETREDRAW, TRUE);
    RedrawWindow(Window(), nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_UPDATENOW);
}

} // namespace quill
