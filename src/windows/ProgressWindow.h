// Quill.ProgressWindow: a small window that shows progress, with a button, and on the taskbar.
#pragma once

#include "core/ErrorLevel.h"
#include "core/EventSource.h"
#include "windows/ProgressBarFn.h"
#include "windows/ShownProperty.h"
#include "windows/frmProWin.h"

#include <shobjidl.h>

#include <functional>
#include <memory>

namespace quill {

// The platform's taskbar object; null where there is none.
ComPtr<ITaskbarList3> CreateTaskbar();

// A seam: where taskbar objects come from.
struct Taskbars {
    std::function<ComPtr<ITaskbarList3>()> create = CreateTaskbar;
};

// The window stays until Remove, its close box, or the object's release. Properties take effect at
// once where it is there, else when it is made.
class ProgressWindow final : public WithErrorLevel<EventSource<_ProgressWindow>>,
                             private frmProWin::Owner {
public:
    ProgressWindow();
    ~ProgressWindow() override { Close(); }

    ACTION(Create, (BSTR tt, SHORT wd, SHORT fx), tt, wd, fx)
    STDMETHODIMP Remove() noexcept override
    {
        return Run([&] { Close(); });
    }
    STDMETHODIMP Flash(LONG num) noexcept override;
    STDMETHODIMP ProgressAdd(SHORT padd) noexcept override;
    STDMETHODIMP ProgressStep() noexcept override;
    METHOD(VARIANT_BOOL, SetProgressRange, (SHORT pmin, SHORT pmax), pmin, pmax)
    STDMETHODIMP SetProgressStep(SHORT i) noexcept override;
    STDMETHODIMP TB_SetProgressState(LONG hWnd, LONG tbpFlag) noexcept override;
    STDMETHODIMP TB_SetProgressValue(LONG hWnd, CURRENCY ullCompleted,
                                     CURRENCY ullTotal) noexcept override;

    PROPERTY_SET_BY(LONG, ProgressStyle, style_, ProgressWindow::SetProgressStyle)
    COMPUTED_PROPERTY(SHORT, Progress)
    PROPERTY_PUT(SHORT, Progress, ProgressWindow::SetProgress)
    PROPERTY_SET_BY(VARIANT_BOOL, ProgressMarquee, marquee_, ProgressWindow::SetProgressMarquee)
    PROPERTY_SET_BY(SHORT, ProgressMarqueeTime, marqueeTime_,
                    ProgressWindow::SetProgressMarqueeTime)
    PROPERTY_SET_BY(SHORT, ProgressState, state_, ProgressWindow::SetProgressState)
    SHOWN_PROPERTY(LONG, ProgressColor, color_, SetBarColor(form.Bar(), color_))
    SHOWN_PROPERTY(LONG, ProgressBackColor, backColor_, SetBarBackColor(form.Bar(), backColor_))
    SHOWN_PROPERTY(SHORT, Button, button_, form.SetButtonMode(button_), Within<0, 2>)
    SHOWN_PROPERTY(SHORT, BtnNotifier, notifier_, form.SetArmed(notifier_ != 0), Within<0, 2>)
    STORED_PROPERTY(SHORT, BtnPressed, pressed_, Within<0, SHRT_MAX>)
    SHOWN_PROPERTY(BSTR, ButtonText, buttonText_, form.PwButton.SetText(buttonText_))
    SHOWN_PROPERTY(BSTR, ButtonLabel, buttonLabel_, form.lblBtnText.SetText(buttonLabel_))
    SHOWN_PROPERTY(BSTR, MainText, mainText_, form.lblMainText.SetText(mainText_), CutTo<1024>)
    STDMETHODIMP get_Text(BSTR* value) noexcept override { return get_MainText(value); }
    STDMETHODIMP put_Text(BSTR value) noexcept override { return put_MainText(value); }
    PROPERTY_SET_BY(LONG, MainTextColor, mainTextColor_, ProgressWindow::SetMainTextColor)
    SHOWN_PROPERTY(BSTR, SubText, subText_, form.lblSubText.SetText(subText_), CutTo<1024>)
    SHOWN_PROPERTY(BSTR, Title, title_, form.SetCaption(title_), CutTo<kTitleLimit>)
    SHOWN_PROPERTY(VARIANT_BOOL, Topmost, topmost_, SetTopmost(form.Window(), topmost_))
    PROPERTY_SET_BY(SHORT, TBProgress, tbMode_, ProgressWindow::SetTBProgress)
    PROPERTY_SET_BY(SHORT, TBProState, tbState_, ProgressWindow::SetTBProState)
    PROPERTY_SET_BY(SHORT, TBProValue, tbValue_, ProgressWindow::SetTBProValue)
    PROPERTY_SET_BY(SHORT, TBProTotal, tbTotal_, ProgressWindow::SetTBProTotal)
    METHOD(VARIANT_BOOL, WaitButton, (LONG milliseconds), milliseconds)

private:
    static constexpr SHORT kDefaultMarqueeTime = 30; // milliseconds
    static constexpr LONG kDefaultColor = static_cast<LONG>(CLR_DEFAULT);
    static constexpr LONG kDarkBlue = 0x993300; // 0x00BBGGRR

    void Create(const std::wstring& title, SHORT width, SHORT classic);
    void Close() noexcept;
    frmProWin* Shown() const noexcept { return form_ && !form_->Closed() ? form_.get() : nullptr; }
    HWND Bar() const noexcept { return form_ ? form_->Bar() : nullptr; }

    bool SetProgressRange(SHORT minimum, SHORT maximum);
    void SetProgressStyle(LONG style);
    SHORT Progress();
    void SetProgress(SHORT position);
    void SetProgressMarquee(bool running);
    void SetProgressMarqueeTime(SHORT milliseconds);
    void SetProgressState(SHORT state);
    void SetMainTextColor(LONG color);
    bool IsMarquee() const noexcept { return (style_ & PBS_MARQUEE) != 0; }
    void ApplyBar();
    void ApplyMarquee();

    void SetTBProgress(SHORT mode);
    void SetTBProState(SHORT state);
    void SetTBProValue(SHORT value);
    void SetTBProTotal(SHORT total);
    bool Follows() const noexcept { return tbMode_ == 2; }
    void TakeBarOver();
    void AddToTaskbar(SHORT increment);
    void FollowState();
    void PushState(SHORT state) noexcept;
    void PushValue() noexcept;

    bool WaitButton(LONG milliseconds);

    void OnPressed(bool armed) noexcept override;
    void OnTaskbarButton() noexcept override;

    std::wstring title_ = L"QUILL ProgressWindow";
    bool topmost_ = true;
    LONG mainTextColor_ = kDarkBlue;
    std::wstring mainText_;
    std::wstring subText_;
    SHORT button_ = 0;
    SHORT notifier_ = 1;
    SHORT pressed_ = 0;
    std::wstring buttonText_ = L"Stop";
    std::wstring buttonLabel_;
    LONG style_ = 0; // PBS_ bits
    SHORT position_ = 0;
    SHORT minimum_ = 0;
    SHORT maximum_ = 100;
    SHORT step_ = 10;
    bool marquee_ = true;
    SHORT marqueeTime_ = kDefaultMarqueeTime;
    SHORT state_ = PBST_NORMAL;
    LONG color_ = kDefaultColor;
    LONG backColor_ = kDefaultColor;
    SHORT tbMode_ = 0; // 1: the script's own values, 2: those of the bar
    SHORT tbState_ = TBPF_NORMAL;
    SHORT tbValue_ = 0;
    SHORT tbTotal_ = 100;
    bool pressedSinceWait_ = false; // armed or not
    bool pumping_ = false;          // after an event
    std::shared_ptr<frmProWin> form_;
    ComPtr<ITaskbarList3> taskbar_; // null: no progress there
};

} // namespace quill
