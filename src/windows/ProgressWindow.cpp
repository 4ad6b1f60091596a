#include "windows/ProgressWindow.h"

#include <utility>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr PublishedError kControlCreation{ErrorNumber(0x80040357), L"Control creation error."};

constexpr DISPID kButtonPressed = 1;
constexpr int kWindows7 = 601;

SHORT Sum(SHORT left, SHORT right)
{
    const int sum = left + right;
    if (sum < SHRT_MIN || sum > SHRT_MAX) RaiseRuntimeError(RuntimeError::Overflow);
    return static_cast<SHORT>(sum);
}

// Kept as published: the number as Currency, ten thousand times as large. The taskbar shows the
// ratio.
ULONGLONG AsCurrency(SHORT number) noexcept
{
    return static_cast<ULONGLONG>(number * 10'000LL);
}

} // namespace

CREATABLE(ProgressWindow)

ComPtr<ITaskbarList3> CreateTaskbar()
{
    ComPtr<ITaskbarList3> taskbar;
    if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(&taskbar))))
        return nullptr;
    return taskbar;
}

ProgressWindow::ProgressWindow()
{
    if (ThisApartment().osVersion < kWindows7) return;
    taskbar_ = Seam<Taskbars>().create();
    if (taskbar_ && FAILED(taskbar_->HrInit())) taskbar_.Reset();
}

void ProgressWindow::Create(const std::wstring& title, SHORT width, SHORT classic)
{
    if (Shown()) return;
    const auto form = std::make_shared<frmProWin>(static_cast<frmProWin::Owner&>(*this));
    form->lblMainText.SetText(mainText_);
    form->lblMainText.SetTextColor(static_cast<COLORREF>(mainTextColor_));
    if (!title.empty()) title_ = title.substr(0, kTitleLimit);
    form->SetCaption(title_);
    if (InRange(width, 360, 900)) form->SetWidth(width);
    form->lblSubText.SetText(subText_);
    form->SetButtonMode(button_);
    form->SetArmed(notifier_ != 0);
    form->PwButton.SetText(buttonText_);
    form->lblBtnText.SetText(buttonLabel_);
    if (!form->AddBar(style_, classic != 0)) {
        form->Unload();
        Refuse(kControlCreation);
        return;
    }
    form_ = form;
    pressedSinceWait_ = false;
    ApplyBar();
    if (Follows()) TakeBarOver();
    form->ShowAtCentre(topmost_);
}

void ProgressWindow::Close() noexcept
{
    if (const auto form = std::exchange(form_, nullptr)) form->Unload();
}

HRESULT ProgressWindow::Flash(LONG count) noexcept
{
    return Run([&] {
        if (frmProWin* form = Shown()) FlashCaption(form->Window(), count);
    });
}

// All settings of the bar, to a new one.
void ProgressWindow::ApplyBar()
{
    SetBarState(Bar(), state_);
    SetBarColor(Bar(), color_);
    SetBarBackColor(Bar(), backColor_);
    SetBarRange(Bar(), minimum_, maximum_);
    SetBarStep(Bar(), step_);
    if (IsMarquee())
        ApplyMarquee();
    else
        SetBarPosition(Bar(), position_);
}

void ProgressWindow::ApplyMarquee()
{
    if (IsMarquee()) SetBarMarquee(Bar(), marquee_, marqueeTime_);
}

HRESULT ProgressWindow::ProgressAdd(SHORT increment) noexcept
{
    return Run([&] {
        if (!Bar()) return;
        if (!IsMarquee()) MoveBarBy(Bar(), increment);
        AddToTaskbar(increment);
    });
}

HRESULT ProgressWindow::ProgressStep() noexcept
{
    return Run([&] {
        if (!Bar()) return;
        StepBar(Bar());
        AddToTaskbar(step_);
    });
}

bool ProgressWindow::SetProgressRange(SHORT minimum, SHORT maximum)
{
    if (minimum < 0 || maximum < minimum) return false;
    minimum_ = minimum;
    maximum_ = maximum;
    SetBarRange(Bar(), minimum, maximum);
    if (Follows()) {
        tbTotal_ = static_cast<SHORT>(maximum - minimum);
        PushValue();
    }
    return true;
}

HRESULT ProgressWindow::SetProgressStep(SHORT step) noexcept
{
    return Run([&] {
        step_ = step;
        SetBarStep(Bar(), step);
    });
}

void ProgressWindow::SetProgressStyle(LONG style)
{
    style_ = style & (PBS_SMOOTH | PBS_MARQUEE | PBS_SMOOTHREVERSE);
    SetBarStyle(Bar(), style_);
    FollowState();
}

SHORT ProgressWindow::Progress()
{
    if (Bar()) position_ = BarPosition(Bar());
    return position_;
}

void ProgressWindow::SetProgress(SHORT position)
{
    position_ = position;
    if (!IsMarquee()) SetBarPosition(Bar(), position);
    if (Follows()) {
        tbValue_ = position;
        PushValue();
    }
}

void ProgressWindow::SetProgressMarquee(bool running)
{
    marquee_ = running;
    ApplyMarquee();
    FollowState();
}

void ProgressWindow::SetProgressMarqueeTime(SHORT milliseconds)
{
    if (!InRange(milliseconds, 0, 1000)) return;
    marqueeTime_ = milliseconds == 0 ? kDefaultMarqueeTime : milliseconds;
    ApplyMarquee();
    FollowState();
}

void ProgressWindow::SetProgressState(SHORT state)
{
    if (InRange(state, PBST_NORMAL, PBST_PAUSED)) {
        state_ = state;
        SetBarState(Bar(), state);
    }
    FollowState();
}

void ProgressWindow::SetMainTextColor(LONG color)
{
    constexpr LONG kOfSystem = static_cast<LONG>(0x80000000);
    if (color == kDefaultColor)
        mainTextColor_ = kDarkBlue;
    else if (color == (kOfSystem | COLOR_MENUTEXT) || color == (kOfSystem | COLOR_WINDOWTEXT) ||
             color == (kOfSystem | COLOR_BTNTEXT))
        mainTextColor_ = color;
    else
        mainTextColor_ = color & 0xFFFFFF;
    if (frmProWin* form = Shown())
        form->lblMainText.SetTextColor(static_cast<COLORREF>(mainTextColor_));
}

HRESULT ProgressWindow::TB_SetProgressState(LONG window, LONG flags) noexcept
{
    return Run([&] {
        if (!taskbar_) RaiseRuntimeError(RuntimeError::ObjectNotSet);
        Check(taskbar_->SetProgressState(static_cast<HWND>(LongToHandle(window)),
                                         static_cast<TBPFLAG>(flags)));
    });
}

HRESULT ProgressWindow::TB_SetProgressValue(LONG window, CURRENCY completed,
                                            CURRENCY total) noexcept
{
    return Run([&] {
        if (!taskbar_) RaiseRuntimeError(RuntimeError::ObjectNotSet);
        Check(taskbar_->SetProgressValue(static_cast<HWND>(LongToHandle(window)),
                                         static_cast<ULONGLONG>(completed.int64),
                                         static_cast<ULONGLONG>(total.int64)));
    });
}

void ProgressWindow::SetTBProgress(SHORT mode)
{
    if (!taskbar_ || mode == tbMode_ || !InRange(mode, 0, 2)) return;
    if (mode == 0) PushState(TBPF_NOPROGRESS);
    tbMode_ = mode;
    if (Follows()) TakeBarOver();
    PushValue();
    PushState(tbState_);
}

void ProgressWindow::SetTBProState(SHORT state)
{
    const bool known = state == TBPF_NOPROGRESS || state == TBPF_INDETERMINATE ||
                       state == TBPF_NORMAL || state == TBPF_ERROR || state == TBPF_PAUSED;
    if (Follows() || state == tbState_ || !known) return;
    tbState_ = state;
    PushState(state);
}

void ProgressWindow::SetTBProValue(SHORT value)
{
    if (Follows() || value == tbValue_ || value < 0) return;
    tbValue_ = value;
    PushValue();
}

void ProgressWindow::SetTBProTotal(SHORT total)
{
    if (Follows() || total == tbTotal_ || total < 0) return;
    tbTotal_ = total;
    PushValue();
}

void ProgressWindow::TakeBarOver()
{
    tbValue_ = Progress();
    tbTotal_ = static_cast<SHORT>(maximum_ - minimum_);
}

void ProgressWindow::AddToTaskbar(SHORT increment)
{
    if (!Follows()) return;
    tbValue_ = Sum(tbValue_, increment);
    PushValue();
}

// Where the taskbar follows the bar, it shows the bar's state too.
void ProgressWindow::FollowState()
{
    if (!Follows()) return;
    if (IsMarquee())
        tbState_ = marquee_ ? TBPF_INDETERMINATE : TBPF_NOPROGRESS;
    else if (state_ == PBST_ERROR)
        tbState_ = TBPF_ERROR;
    else
        tbState_ = state_ == PBST_PAUSED ? TBPF_PAUSED : TBPF_NORMAL;
    PushState(tbState_);
}

// Results are ignored: a script does not fail because the taskbar cannot show its progress.
void ProgressWindow::PushState(SHORT state) noexcept
{
    if (tbMode_ != 0 && Shown())
        taskbar_->SetProgressState(form_->Window(), static_cast<TBPFLAG>(state));
}

// Kept as published: the value alone, although it brings a taskbar without progress, or with one
// that cycles, to the normal state.
void ProgressWindow::PushValue() noexcept
{
    if (tbMode_ != 0 && Shown())
        taskbar_->SetProgressValue(form_->Window(), AsCurrency(tbValue_), AsCurrency(tbTotal_));
}

// The window that is waited for may go, and another may come.
bool ProgressWindow::WaitButton(LONG milliseconds)
{
    WaitWhile(milliseconds, [this] { return Shown() && !pressedSinceWait_ && !ClientsGone(); });
    return Shown() && std::exchange(pressedSinceWait_, false);
}

void ProgressWindow::OnPressed(bool armed) noexcept
{
    pressedSinceWait_ = true;
    if (!armed) return;
    const ComPtr<_ProgressWindow> alive(this); // the handler may release the object
    try {
        pressed_ = Sum(pressed_, 1); // an overflow is not reported
        if (std::exchange(notifier_, SHORT{0}) != 2) return;
        // If the client was too busy, the next press is reported.
        if (!Fire(kButtonPressed) && notifier_ == 0) put_BtnNotifier(2);
        if (pumping_) return; // a press that came in while the last one's messages ran
        const FlagScope pumping(pumping_);
        DispatchPending();
    } catch (...) {
        // There is no caller to report to.
    }
}

void ProgressWindow::OnTaskbarButton() noexcept
{
    PushValue();
    PushState(tbState_);
}

} // namespace quill
