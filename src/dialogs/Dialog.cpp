#include "dialogs/Dialog.h"

#include <algorithm>

#include "gui/DialogWatch.h"
#include "gui/guifn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// Longer captions are cut, in UTF-16 units.
constexpr size_t kButtonTextLimit = 32;

// The window is at least this much wider than its button.
constexpr float kBesideButton = 900;

constexpr float kBetweenButtons = 120;

constexpr UINT_PTR kLookTimer = 1;

} // namespace

DialogForm::DialogForm(const DialogDesign& design, DialogRequest request)
    : ScrollingForm(design.caption, design.outer, design.style), request_(std::move(request)),
      lblText(*this, {0, 0, design.infoWidth, 0})
{
}

void DialogForm::Prepare(const std::wstring& title)
{
    const DialogSettings& settings = Settings();
    const bool hasInfo = !settings.info.empty();
    if (!title.empty()) SetCaption(title.substr(0, kTitleLimit));
    lblText.SetText(settings.info);
    lblText.Enable(hasInfo);
    lblText.SetVisible(hasInfo);
    OKButton.PlaceLast();
    if (!settings.buttonText.empty())
        OKButton.SetText(settings.buttonText.substr(0, kButtonTextLimit));
    if (!settings.cancelText.empty())
        cancelButton_ =
            std::make_unique<Button>(*this, TwipRect{0, 0, kButtonWidth, kButtonHeight},
                                     settings.cancelText.substr(0, kButtonTextLimit).c_str(),
                                     [this] { Finish(Ending::Cancelled); });
    if (settings.fontModernize) ApplyModernFont(*this);
    if (settings.fontEnlarge != 0) ApplyFontSize(*this, kDesignFont.points + settings.fontEnlarge);
    if (hasInfo) infoHeight_ = std::clamp(lblText.HeightOfText(), kInfoHeight, kMaximumInfoHeight);
    const Button* timed = TimedButton();
    counted_ = WindowText(timed ? timed->Window() : Window());
    if (timed) ShowSecondsLeft(request_.timeout); // the widest caption
    buttonWidth_ = WidthOf(OKButton);
    if (cancelButton_) cancelWidth_ = WidthOf(*cancelButton_);
}

float DialogForm::WidthOf(const Button& button) const
{
    return std::clamp(button.WidthOfText(), kButtonWidth, OuterSize().width - kBesideButton);
}

bool DialogForm::Ask()
{
    request_.ending = Ending::ClientGone; // unless something else ends it
    time_ = std::make_unique<AnswerTime>(request_.timeout);
    ShowSecondsLeft(request_.timeout);
    Show(Settings().topmost);
    if (time_->Limited()) SetTimer(Window(), kLookTimer, time_->UntilNextLook(), nullptr);
    WaitUntilClosed(request_.abandoned);
    return accepted_;
}

void DialogForm::Accept()
{
    if (Closed() || !OnAccept()) return;
    accepted_ = true;
    Finish(Ending::Accepted);
}

void DialogForm::Finish(Ending ending)
{
    if (Closed()) return;
    request_.ending = ending;
    Unload();
}

void DialogForm::EndByTime(bool accept)
{
    if (Closed()) return;
    timeOver_ = true;
    acceptThen_ = accept;
    if (LeaveLoop())
        SetTimer(Window(), kLookTimer, USER_TIMER_MINIMUM, nullptr);
    else
        OnLook();
}

Button* DialogForm::TimedButton() noexcept
{
    if (Settings().timeoutAccepts) return &OKButton;
    return cancelButton_.get();
}

void DialogForm::ShowSecondsLeft(LONG seconds)
{
    if (!Settings().showCountdown || request_.timeout == 0) return;
    const std::wstring text = counted_ + L" (" + std::to_wstring(seconds) + L")";
    if (Button* timed = TimedButton())
        timed->SetText(text);
    else
        SetCaption(text);
}

void DialogForm::Nest(const std::function<void()>& show)
{
    const FlagScope nested(nested_);
    const DialogWatch watch(0, [this] { return timeOver_ || request_.abandoned(); });
    show();
}

void DialogForm::OnLook()
{
    if (timeOver_ && nested_) { // the nested dialog ends first
        SetTimer(Window(), kLookTimer, USER_TIMER_MINIMUM, nullptr);
    } else if (timeOver_) {
        accepted_ = acceptThen_ && OnAccept();
        Finish(Ending::TimeOver);
    } else if (time_->Over()) {
        EndByTime(Settings().timeoutAccepts);
    } else {
        ShowSecondsLeft(time_->SecondsLeft());
        SetTimer(Window(), kLookTimer, time_->UntilNextLook(), nullptr);
    }
}

LRESULT DialogForm::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_TIMER || wParam != kLookTimer)
        return ScrollingForm::Handle(message, wParam, lParam);
    OnLook();
    return 0;
}

float DialogForm::WidthSurplus(float room) const noexcept
{
    if (!cancelButton_) return 0;
    return std::max(0.0F, buttonWidth_ + kBetweenButtons + cancelWidth_ - room);
}

void DialogForm::PlaceButtons(const TwipRect& alone)
{
    TwipRect place = alone;
    if (cancelButton_) {
        const float left = alone.left + alone.width - cancelWidth_;
        cancelButton_->Move({left, alone.top, cancelWidth_, alone.height});
        place.left = left - kBetweenButtons - alone.width;
    }
    OKButton.Move(place);
}

float DialogForm::InfoSurplus() const noexcept
{
    return std::max(0.0F, infoHeight_ - kInfoHeight);
}

bool DialogForm::OnPreview(const MSG& message)
{
    if (message.message != WM_KEYDOWN) return false;
    const bool byEscape =
        message.wParam == VK_ESCAPE && (Settings().dlgCancelEsc || cancelButton_ != nullptr);
    const bool byEnter =
        message.wParam == VK_RETURN && cancelButton_ && message.hwnd == cancelButton_->Window();
    if (byEscape || byEnter) Finish(Ending::Cancelled);
    return byEscape || byEnter;
}

} // namespace quill
