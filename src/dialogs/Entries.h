// The fields of Quill.MInputBox. Each kind of field is a class: the controls it is made of, what it
// shows at first, what of it is read, and what it refuses.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "dialogs/Secret.h"
#include "gui/InputControls.h"

namespace quill {

// As scripts number them.
enum class InputKind : SHORT {
    Text,
    Password,
    Lines,
    Number,
    CheckBox,
    ComboBox,
    List,
    Date,
    OpenFile,
    SaveFile,
    Folder,
};

// What all fields have in common. Whole numbers are as scripts set them.
struct InputSettings {
    SHORT number = 1;
    SHORT start = 0; // index of the field with the focus
    SHORT textLimit = 1024;
    SHORT labelEditRatio = 4; // eighths of a row for the label
    SHORT alignInput = 0;     // 0 left, 1 right, 2 centre
    SHORT alignLabel = 0;
    SHORT tips = 0;  // 0 tooltips, 1 balloons, 2 a line below the fields
    SHORT flags = 0; // bit i: field i, if it is a text, is a password
    bool checkDigits = true;
    bool selectText = true;
    bool cueAtFocus = false;
    bool accessKeys = false;
    bool bigInfo = false;
    bool columns = false; // labels beside their fields; limits apply
    std::wstring passwordChar = L"*";
    std::wstring balloonText, balloonTitle;
};

struct InputField {
    InputKind kind = InputKind::Text;
    std::wstring label, text, cueText, tipText;
    bool checked = false;           // a check box at first
    std::optional<SYSTEMTIME> date; // a date at first; without one today
    std::vector<std::wstring> items;
    std::optional<double> min, max;             // of a number
    std::optional<SYSTEMTIME> earliest, latest; // of a date
    SHORT textStyle = 0;                        // 1 upper case, 2 lower case, 3 digits
    SHORT maxLen = 0;                           // 0: the common limit
    SHORT minLen = 0;
    SHORT sameAs = -1; // index of the field with the same text; any other number: none
    bool locked = false;
    bool required = false;
    std::wstring pattern, errorText; // empty: none
    COLORREF labelColor = 0;         // 0: the system's
    COLORREF textColor = 0;
};

// What a field held on OK, for as long as its object keeps it: a password only as a Secret.
using Answer = std::variant<Variant, Secret>;

// What an entry needs of its form.
struct EntryHost {
    Form& form;
    const InputSettings& input;
    FocusHandler onFocus;                                   // of its main control
    std::function<void(const std::function<void()>&)> nest; // shows a dialog of the platform
};

class Entry {
public:
    virtual ~Entry() = default;
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    // The control that the label names.
    virtual Control& Main() = 0;
    // The text box that the user types into; null where there is none.
    virtual HWND Edit() const { return nullptr; }
    // The window that hears keys.
    HWND KeyWindow();
    // True for the window of any of its controls.
    virtual bool Has(HWND window);

    // With one line of text, or as many as it always has; twips.
    virtual float Height() = 0;
    // True: it can use more height.
    virtual bool Grows() const { return false; }
    virtual void Move(const TwipRect& place) { Main().Move(place); }

    virtual std::wstring Text() const = 0;
    // `text` is what Text returns.
    virtual Answer Value(const std::wstring& text) const { return Variant(text); }
    // Why the user's entry cannot be accepted; empty when it can.
    std::wstring Fault(const std::wstring& text) const;

    // The focus has entered, and leaves.
    virtual void OnEnter() {}
    virtual void OnLeave() {}
    // A key for one of its controls: true when it is done with.
    virtual bool OnKey(const MSG&) { return false; }
    // Enter is for it, without Ctrl.
    virtual bool TakesEnter() const { return false; }
    // A list of it is open: Enter and Esc are for that.
    virtual bool ListOpen() const { return false; }
    // Ends the platform's loop that it is in (an open calendar); false when there is none.
    virtual bool LeaveLoop() { return false; }
    // Leaves nothing of its text in its controls. The form closes.
    virtual void Forget() {}

protected:
    Entry(const EntryHost& host, const InputField& field) : host_(host), field_(field) {}

    // What all kinds do once their controls are there.
    void SetUp();
    virtual void SetCue() {}
    virtual void Lock() { Main().Enable(false); }
    // True when there is nothing in it, and what it says when there should be.
    virtual bool Empty(const std::wstring& text) const { return text.empty(); }
    virtual std::wstring MissingText() const;
    // Why its kind refuses what was entered.
    virtual std::wstring FaultOfKind(const std::wstring&) const { return {}; }

    const EntryHost host_;
    const InputField& field_;
};

// The label as a user reads it, without the mark of its access key.
std::wstring ShownLabel(const InputSettings& input, const InputField& field);

// The field outlives the entry. Throws AutomationError when the platform refuses a control.
std::unique_ptr<Entry> MakeEntry(const EntryHost& host, const InputField& field, InputKind kind);

} // namespace quill
