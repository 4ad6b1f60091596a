// The native controls that forms are made of. A control is a value member of its form; the order of
// the members is the order of the tab key, and a label names the control that follows it.
#pragma once

#include <oleacc.h>

#include "gui/Form.h"

namespace quill {

class Control {
public:
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    HWND Window() const noexcept { return window_; } // null once the form is closed
    const TwipRect& Place() const noexcept { return place_; }
    virtual void Move(const TwipRect& place);
    void SetText(const std::wstring& text);
    void Enable(bool enabled);
    void SetVisible(bool visible);
    void Focus();
    // Makes it the last one of the form for the tab key, whenever it was made.
    void PlaceLast() noexcept;
    // What screen readers call the control, where no label says it (IAccPropServices).
    void SetAccessibleName(const std::wstring& name);
    // The colour of its text; system colours as GetSysColor counts them with the high bit set.
    // CLR_DEFAULT is the system's own.
    void SetTextColor(COLORREF color);
    // The height in twips of one line of its text.
    float LineHeight() const;
    const FontSpec& CurrentFont() const noexcept { return font_; }
    virtual void SetFont(const FontSpec& font);

protected:
    Control(Form& form, const TwipRect& place, const wchar_t* windowClass, const wchar_t* text,
            DWORD style, DWORD extendedStyle = 0);
    virtual ~Control();

    // A notification of the native control (the high word of WM_COMMAND, or WM_NOTIFY).
    virtual void OnCommand(WORD) {}
    // The result of the latter goes back to the control.
    virtual LRESULT OnNotify(NMHDR&) { return 0; }
    // A character was typed into the control; true when it has been handled.
    virtual bool OnCharacter(wchar_t) { return false; }

    const Form& Owner() const noexcept { return form_; }

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const noexcept
    {
        return SendMessageW(window_, message, wParam, lParam);
    }

private:
    friend class Form;

    void TakeAccessibleName() noexcept;

    Form& form_;
    HWND window_ = nullptr;
    TwipRect place_;
    ComPtr<IAccPropServices> names_; // null where there is no accessible name
    FontSpec font_;
    COLORREF textColor_ = CLR_DEFAULT;
};

// Text that wraps. With the default style "&" is shown as it is.
class Label : public Control {
public:
    Label(Form& form, const TwipRect& place, const wchar_t* text = L"",
          DWORD style = SS_LEFT | SS_NOPREFIX); // SS_ bits

    // The height in twips that its text needs at its width.
    float HeightOfText() const;
};

// A push button. The first default button of a form is the one that Enter presses.
class Button : public Control {
public:
    enum class Kind { Plain, Default };

    Button(Form& form, const TwipRect& place, const wchar_t* text, std::function<void()> onClick,
           Kind kind = Kind::Plain);

    // The width in twips that its caption needs, with room at both ends.
    float WidthOfText() const;

private:
    void OnCommand(WORD code) override;

    std::function<void()> onClick_;
};

// A native edit control with a border; scrolls sideways, or down where it has several lines.
class TextBox : public Control {
public:
    // ES_ and WS_ bits; `onFocus` hears that the user comes in (true) or leaves (false).
    TextBox(Form& form, const TwipRect& place, DWORD style = 0,
            std::function<void(bool)> onFocus = nullptr);

    std::wstring Text() const;
    // Selects from `first` to before `last`, -1 for the end, and shows the caret.
    void Select(int first, int last);

private:
    void OnCommand(WORD code) override;

    std::function<void(bool)> onFocus_;
};

// A line around controls that belong together; it stands before them.
class Frame : public Control {
public:
    Frame(Form& form, const TwipRect& place);
};

// Makes a window class of the common controls known (ICC_ bits); its name.
const wchar_t* CommonClass(DWORD group, const wchar_t* name) noexcept;

// The longest of many lines: the widest is likely among them, whatever the font.
std::vector<std::wstring_view> LongestOf(const std::vector<std::wstring_view>& lines);

// A list box. Typing finds the line that begins with what was typed.
class ListBox : public Control {
public:
    enum class Kind { Single, Multiple }; // Multiple: Shift and Ctrl extend the selection

    ListBox(Form& form, const TwipRect& place, Kind kind, std::function<void()> onDoubleClick);

    // Shows these lines in place of the old ones, in this order. A NUL follows each.
    void Fill(const std::vector<std::wstring_view>& lines);
    // Selects these lines and no others, and scrolls to the first. Single takes the first alone.
    void Select(const std::vector<int>& indices);
    // The selected lines, from the first to the last.
    std::vector<int> Selected() const;
    void SetFont(const FontSpec& font) override;

private:
    void OnCommand(WORD code) override;
    bool OnCharacter(wchar_t unit) override;
    void FitScrollBar() noexcept;

    const Kind kind_;
    std::function<void()> onDoubleClick_;
    std::wstring typed_;                // by the user, to find a line
    DWORD typedAt_ = 0;                 // milliseconds, by the message clock
    std::vector<std::wstring> longest_; // lines that may be the widest, in any font
};

// A native drop-down list. `place` counts for its left, top and width.
class DropDownList : public Control {
public:
    // CBS_ bits; `onFocus` hears that the user comes in (true) or leaves.
    DropDownList(Form& form, const TwipRect& place, DWORD style = CBS_DROPDOWNLIST,
                 std::function<void(bool)> onFocus = nullptr);

    void Add(const std::wstring& line);
    // Replaces a line; the selection stays.
    void Replace(int index, const std::wstring& line);
    void Select(int index);
    int Selected() const; // -1: none
    bool DroppedDown() const noexcept { return Send(CB_GETDROPPEDSTATE) != 0; }
    // What it shows while nothing is selected.
    void SetCue(const std::wstring& text);
    // Its height in twips without the open list; at first the font decides.
    void SetClosedHeight(float height);

private:
    void OnCommand(WORD code) override;
    void FitList(const std::wstring& line);

    std::function<void(bool)> onFocus_;
};

// A native picker of a date or of a time.
class DateTimePicker : public Control {
public:
    enum class Kind { Date, Time };

    DateTimePicker(Form& form, const TwipRect& place, Kind kind);

    // A time outside its range (years 1601 to 9999) leaves what it shows.
    void Pick(const SYSTEMTIME& time);
    SYSTEMTIME Picked() const;
    // True while its calendar is open.
    bool DroppedDown() const noexcept { return droppedDown_; }
    void CloseCalendar() noexcept { Send(DTM_CLOSEMONTHCAL); }

protected:
    LRESULT OnNotify(NMHDR& notification) override;

private:
    bool droppedDown_ = false;
};

} // namespace quill
