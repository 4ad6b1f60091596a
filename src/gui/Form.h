// A window with native controls. Sizes and places are in twips (1/1440 inch), as forms are
// designed; the window's resolution turns them into pixels, and again when it changes.
//
//     class frmGreeting final : public Form {
//     public:
//         frmGreeting() : Form(L"Greeting", {3000, 1500}, kDialogStyle) {}
//     private:
//         Label lblText{*this, {240, 140, 2400, 300}};
//         Button OKButton{*this, {1500, 600, 1200, 380}, L"OK", [this] { Unload(); }};
//     };
//
// The window exists, hidden, as soon as the form does; failure to create it, or a control, throws
// AutomationError. The form object outlives its window: it goes with its owner. One that may go
// while a handler of its own runs, as a window does that stays open between calls, is owned by
// std::shared_ptr: each message holds a reference.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/Platform.h"

namespace quill {

class Control;

struct TwipSize {
    float width, height;
    bool operator==(const TwipSize&) const = default;
};

struct TwipRect {
    float left, top, width, height;
    bool operator==(const TwipRect&) const = default;
};

struct FontSpec {
    std::wstring name;
    int points;
    bool bold = false;
    bool operator==(const FontSpec&) const = default;
};

// The font that forms are designed with.
inline const FontSpec kDesignFont{L"MS Shell Dlg 2", 9};

class Form : public std::enable_shared_from_this<Form> {
public:
    // A caption with a close box; the user can size the window, or cannot.
    static constexpr DWORD kDialogStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
    static constexpr DWORD kSizableStyle = kDialogStyle | WS_THICKFRAME | WS_MAXIMIZEBOX;
    // For windows that stay open while the script goes on: the user can put them away, too.
    static constexpr DWORD kModelessStyle = kDialogStyle | WS_THICKFRAME | WS_MINIMIZEBOX;

    // `outer` is the size with frame and caption.
    Form(const wchar_t* caption, TwipSize outer, DWORD style);
    virtual ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    HWND Window() const noexcept { return window_; } // null once closed
    bool Closed() const noexcept { return window_ == nullptr; }

    void SetCaption(const std::wstring& caption);
    TwipSize OuterSize() const;
    TwipSize InnerSize() const; // without frame, caption and scroll bar

    // The form's font; the controls that are there take it over.
    const FontSpec& CurrentFont() const noexcept { return font_; }
    void SetFont(const FontSpec& font);

    // The control that has the focus when the window is first active; without it, the first one.
    void SetFirstFocus(const Control& control);

    // Posts a call of OnPosted with this value, from any thread.
    static void PostTo(HWND form, WPARAM value) noexcept;

    // Shows the window without waiting, and brings it to the front.
    void Show(bool topmost);

    // Shows the window as one that stays open; it takes the foreground only where it may.
    void ShowModeless(bool topmost);

    // Destroys the window, and hands the foreground on if it has that; the form is closed then.
    void Unload() noexcept;

    // Waits until the form is closed, serving messages and calls. Closes it when the thread is to
    // end, or when `abandoned` says that nobody waits for the answer any more. Throws what a
    // handler of the form has thrown.
    void WaitUntilClosed(const std::function<bool()>& abandoned);

    int ToPixels(float twips) const noexcept;
    float ToTwips(int pixels) const noexcept;

protected:
    // Sizes the window and centres it on the monitor where the user works; it is not made larger
    // than the room there.
    void PlaceAtCentre(TwipSize outer);

    // The size of the room for windows on that monitor.
    TwipSize ScreenRoom() const;

    // The place stays; the window is not activated.
    void SetOuterSize(TwipSize outer);

    // Places a control's window where the control is.
    void Place(const Control& control);

    // The window became the active one: the control that last had the focus gets it, or the first.
    virtual void OnActivate();
    // A posted message for the window or one of its controls, such as a key; true when it has been
    // handled.
    virtual bool OnPreview(const MSG&) { return false; }
    // A key has moved the focus to this control.
    virtual void OnFocusMoved(Control& control) { Reveal(control); }
    // The control has got the focus; a form that scrolls brings it into view.
    virtual void Reveal(const Control&) {}
    // PostTo has asked for it.
    virtual void OnPosted(WPARAM) {}
    // The outer size has changed; controls are to be placed.
    virtual void OnResize(TwipSize) {}
    // The user cannot make the window smaller.
    virtual TwipSize MinimumSize() const { return {0, 0}; }
    // Nor larger; 0 is no limit.
    virtual TwipSize MaximumSize() const { return {0, 0}; }
    // True: the limits apply to the user's mouse only, and OnResize corrects other sizes. A window
    // manager reports a size only after it has set it.
    virtual bool SetsSizeBack() const { return false; }
    // The close box was used.
    virtual void OnClose() { Unload(); }
    // A message of the window; what the form does not know goes on to the platform.
    virtual LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    // Pixels of the content above the window.
    virtual int Scrolled() const noexcept { return 0; }

private:
    friend class Control;

    static ATOM WindowClass();
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) noexcept;
    static Form* FromWindow(HWND window) noexcept;
    static bool PreviewMessage(MSG& message);

    // The control that has this window, or one within: a combo box has its text box.
    Control* FindControl(HWND window) const noexcept;
    void LimitSize(MINMAXINFO& limits) const;
    void ChangeResolution(WPARAM resolution, const RECT& suggested);
    HFONT FontHandle(const FontSpec& font); // null when there is no such font to be had
    bool InUse(const FontSpec& font) const noexcept;

    HWND window_ = nullptr;
    int resolution_ = 96; // pixels per inch
    FontSpec font_;
    std::vector<std::pair<FontSpec, Font>> fonts_;
    std::vector<Control*> controls_; // in the order of the tab key
    HWND lastFocus_ = nullptr;
    std::exception_ptr failure_; // what a handler has thrown
};

} // namespace quill
