// Quill.ProgressWindow: a small window that shows progress, with a button, and on the taskbar.
#pragma once

#include "core/ErrorLevel.h"
#include "core/EventSource.h"
#include "windows/frmProWin.h"

#include <shobjidl.h> // after the platform's headers as we take them

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
    STDMETHODIMP Remove() noexcept override { return Call(&ProgressWindow::Close); }
    STDMETHODIMP Flash(LONG num) noexcept override;
    STDMETHODIMP ProgressAdd(SHORT padd) noexcept override;
    STDMETHODIMP ProgressStep() noexcept override;
    METHOD(VARIANT_BOOL, SetProgressRange, (SHORT pmin, SHORT pmax), pmin, pmax)
    STDMETHODIMP SetProgressStep(SHORT i) noexcept override;
    STDMETHODIMP TB_SetProgressState(LONG hWnd, LONG tbpFlag) noexcept override;
    STDMETHODIMP TB_SetProgressValue(LONG hWnd, CURRENCY ullCompleted,
                                     CURRENCY ullTotal) noexcept override;

    PROPERTY_SET_BY(LONG, ProgressStyle, style_, ProgressWindow::SetStyle)
    COMPUTED_PROPERTY(SHORT, Progress)
    STDMETHODIMP put_Progress(SHORT value) noexcept override
    {
        return Call(&ProgressWindow::SetPosition, value);
    }
    PROPERTY_SET_BY(VARIANT_BOOL, ProgressMarquee, marquee_, ProgressWindow::SetMarquee)
    PROPERTY_SET_BY(SHORT, ProgressMarqueeTime, marqueeTime_, ProgressWindow::SetMarqueeTime)
    PROPERTY_SET_BY(SHORT, ProgressState, state_, ProgressWindow::SetState)
    PROPERTY_SET_BY(LONG, ProgressColor, color_, ProgressWindow::SetColor)
    PROPERTY_SET_BY(LONG, ProgressBackColor, backColor_, ProgressWindow::SetBackColor)
    PROPERTY_SET_BY(SHORT, Button, button_, ProgressWindow::SetButton)
    PROPERTY_SET_BY(SHORT, BtnNotifier, notifier_, ProgressWindow::SetNotifier)
    STORED_PROPERTY(SHORT, BtnPressed, pressed_, Within<0, SHRT_MAX>)
    PROPERTY_SET_BY(BSTR, ButtonText, buttonText_, ProgressWindow::SetButtonText)
    PROPERTY_SET_BY(BSTR, ButtonLabel, buttonLabel_, ProgressWindow::SetButtonLabel)
    PROPERTY_SET_BY(BSTR, MainText, mainText_, ProgressWindow::SetMainText)
    STDMETHODIMP get_Text(BSTR* value) noexcept override { return get_MainText(value); }
    STDMETHODIMP put_Text(BSTR value) noexcept override { return put_MainText(value); }
    PROPERTY_SET_BY(LONG, MainTextColor, mainTextColor_, ProgressWindow::SetMainTextColor)
    PROPERTY_SET_BY(BSTR, SubText, subText_, ProgressWindow::SetSubText)
    PROPERTY_SET_BY(BSTR, Title, title_, ProgressWindow::SetTitle)
    PROPERTY_SET_BY(VARIANT_BOOL, Topmost, topmost_, ProgressWindow::PutTopmost)
    PROPERTY_SET_BY(SHORT, TBProgress, tbMode_, ProgressWindow::SetTaskbarMode)
    PROPERTY_SET_BY(SHORT, TBProState, tbState_, ProgressWindow::SetOwnTaskbarState)
    PROPERTY_SET_BY(SHORT, TBProValue, tbValue_, ProgressWindow::SetOwnTaskbarValue)
    PROPERTY_SET_BY(SHORT, TBProTotal, tbTotal_, ProgressWindow::SetOwnTaskbarTotal)

private:
    void Create(const std::wstring& title, SHORT width, SHORT classic);
    void Close() noexcept;
    frmProWin* Shown() const noexcept { return form_ && !form_->Closed() ? form_.get() : nullptr; }
    HWND Bar() const noexcept { return form_ ? form_->Bar() : nullptr; }

    bool SetProgressRange(SHORT minimum, SHORT maximum);
    void SetStyle(LONG style);
    SHORT Progress();
    void SetPosition(SHORT position);
    void SetMarquee(bool running);
    void SetMarqueeTime(SHORT milliseconds);
    void SetState(SHORT state);
    void SetColor(LONG color);
    void SetBackColor(LONG color);
    bool IsMarquee() const noexcept { return (style_ & PBS_MARQUEE) != 0; }
    void ApplyBar();
    void ApplyMarquee();

    void SetButton(SHORT mode);
    void SetNotifier(SHORT notifier);
    void SetButtonText(const std::wstring& text);
    void SetButtonLabel(const std::wstring& text);
    void SetMainText(const std::wstring& text);
    void SetMainTextColor(LONG color);
    void SetSubText(const std::wstring& text);
    void SetTitle(const std::wstring& title);
    void PutTopmost(bool topmost);

    void SetTaskbarMode(SHORT mode);
    void SetOwnTaskbarState(SHORT state);
    void SetOwnTaskbarValue(SHORT value);
    void SetOwnTaskbarTotal(SHORT total);
    bool Follows() const noexcept { return tbMode_ == 2; }
    void TakeBarOver();
    void AddToTaskbar(SHORT increment);
    void FollowState();
    void PushState(SHORT state) noexcept;
    void PushValue() noexcept;

    void OnPressed() noexcept override;
    void OnTaskbarButton() noexcept override;

    std::wstring title_ = L"QUILL ProgressWindow";
    bool topmost_ = true;
    LONG mainTextColor_;
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
    SHORT marqueeTime_;
    SHORT state_ = PBST_NORMAL;
    LONG color_;
    LONG backColor_;
    SHORT tbMode_ = 0; // 1: the script's own values, 2: those of the bar
    SHORT tbState_ = TBPF_NORMAL;
    SHORT tbValue_ = 0;
    SHORT tbTotal_ = 100;
    bool pumping_ = false; // after an event
    std::shared_ptr<frmProWin> form_;
    ComPtr<ITaskbarList3> taskbar_; // null: no progress there
};

} // namespace quill
