#include "gui/ScrollingForm.h"

#include <algorithm>

#include "gui/Controls.h"

namespace quill {

namespace {

constexpr int kScrollLine = 32; // pixels

} // namespace

void ScrollingForm::SetContentHeight(float height)
{
    contentHeight_ = height;
    FitScrollBar();
}

LRESULT ScrollingForm::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_SIZE: {
        const LRESULT result = Form::Handle(message, wParam, lParam);
        if (wParam != SIZE_MINIMIZED) FitScrollBar();
        return result;
    }
    case WM_VSCROLL: Scroll(LOWORD(wParam)); return 0;
    case WM_MOUSEWHEEL:
        ScrollTo(scrolled_ - GET_WHEEL_DELTA_WPARAM(wParam) * 3 * kScrollLine / WHEEL_DELTA);
        return 0;
    default: return Form::Handle(message, wParam, lParam);
    }
}

void ScrollingForm::FitScrollBar()
{
    if (contentHeight_ == 0) return;
    RECT inner{};
    GetClientRect(Window(), &inner);
    SCROLLINFO bar{};
    bar.cbSize = sizeof bar;
    bar.fMask = SIF_RANGE | SIF_PAGE;
    bar.nMax = ToPixels(contentHeight_) - 1;
    bar.nPage = static_cast<UINT>(inner.bottom);
    SetScrollInfo(Window(), SB_VERT, &bar, TRUE); // shown when the content is higher than the page
    ScrollTo(scrolled_);
}

void ScrollingForm::Scroll(WORD request)
{
    SCROLLINFO bar{};
    bar.cbSize = sizeof bar;
    bar.fMask = SIF_ALL;
    GetScrollInfo(Window(), SB_VERT, &bar);
    const auto page = static_cast<int>(bar.nPage);
    switch (request) {
    case SB_LINEUP: return ScrollTo(scrolled_ - kScrollLine);
    case SB_LINEDOWN: return ScrollTo(scrolled_ + kScrollLine);
    case SB_PAGEUP: return ScrollTo(scrolled_ - page);
    case SB_PAGEDOWN: return ScrollTo(scrolled_ + page);
    case SB_TOP: return ScrollTo(0);
    case SB_BOTTOM: return ScrollTo(bar.nMax);
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION: return ScrollTo(bar.nTrackPos);
    default: break;
    }
}

void ScrollingForm::ScrollTo(int top)
{
    RECT inner{};
    GetClientRect(Window(), &inner);
    top =
        std::clamp(top, 0, std::max(0, ToPixels(contentHeight_) - static_cast<int>(inner.bottom)));
    if (top == scrolled_) return;
    const int distance = scrolled_ - top;
    scrolled_ = top;
    SetScrollPos(Window(), SB_VERT, top, TRUE);
    ScrollWindowEx(Window(), 0, distance, nullptr, nullptr, nullptr, nullptr,
                   SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
}

void ScrollingForm::Reveal(const Control& control)
{
    RECT inner{};
    GetClientRect(Window(), &inner);
    const int top = ToPixels(control.Place().top) - kScrollLine;
    const int bottom = ToPixels(control.Place().top + control.Place().height) + kScrollLine;
    if (top < scrolled_)
        ScrollTo(top);
    else if (bottom > scrolled_ + inner.bottom)
        ScrollTo(bottom - inner.bottom);
}

} // namespace quill
