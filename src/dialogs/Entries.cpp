#include "dialogs/Entries.h"

#include <cderr.h>

#include <algorithm>
#include <iterator>
#include <tuple>

#include "core/Apartment.h"
#include "core/Dates.h"
#include "core/Paths.h"
#include "core/Text.h"
#include "dialogs/FileDialog.h"
#include "dialogs/FolderDialog.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// Twips.
constexpr float kEditPadding = 120; // of an edit control, around its line
constexpr float kLines = 4;         // of a text of several lines, at least
constexpr float kButtonWidth = 450; // beside a path
constexpr float kButtonGap = 60;

constexpr size_t kMostPathUnits = 32767; // of a path that is chosen
constexpr size_t kShownMask = 60;        // characters of a mask that a user is shown

constexpr SHORT kDigits = 3; // InputField::textStyle

LONG CaseStyle(SHORT textStyle)
{
    switch (textStyle) {
    case 1: return ES_UPPERCASE;
    case 2: return ES_LOWERCASE;
    case kDigits: return ES_NUMBER;
    default: return 0;
    }
}

DWORD EditStyle(const EntryHost& host, const InputField& field)
{
    constexpr DWORD alignments[] = {ES_LEFT, ES_RIGHT, ES_CENTER};
    return alignments[host.input.alignInput] | (field.locked ? ES_READONLY : 0U);
}

// The height of a control that shows one line.
float LineHeightOf(const Control& control)
{
    return control.LineHeight() + kEditPadding;
}

// A lower limit above the upper one: neither counts.
template <class Limit>
bool InOrder(const std::optional<Limit>& low, const std::optional<Limit>& high)
{
    return !low || !high || *low <= *high;
}

// Says why something is not within limits, of which one may be empty.
std::wstring RangeText(const wchar_t* what, const std::wstring& low, const std::wstring& high)
{
    std::wstring text = what;
    if (!low.empty()) text += L" from " + low;
    if (!low.empty() && high.empty()) text += L" on";
    if (!high.empty()) text += (low.empty() ? L" up to " : L" to ") + high;
    return text + L" is needed here.";
}

// One line of text.
class TextEntry : public Entry {
public:
    TextEntry(const EntryHost& host, const InputField& field)
        : TextEntry(host, field,
                    std::make_unique<TextBox>(host.form, TwipRect{}, EditStyle(host, field),
                                              host.onFocus))
    {
    }

    Control& Main() override { return *box_; }
    HWND Edit() const override { return box_->Window(); }
    float Height() override { return LineHeightOf(*box_); }
    std::wstring Text() const override { return box_->Text(); }
    void OnEnter() override { box_->Select(host_.input.selectText ? 0 : -1, -1); }

protected:
    TextEntry(const EntryHost& host, const InputField& field, std::unique_ptr<TextBox> box)
        : Entry(host, field), box_(std::move(box))
    {
        SetUp();
    }

    void Lock() override {} // its style says so
    void SetCue() override
    {
        SendMessageW(Edit(), EM_SETCUEBANNER, host_.input.cueAtFocus ? 1 : 0,
                     reinterpret_cast<LPARAM>(field_.cueText.c_str()));
    }

    const std::unique_ptr<TextBox> box_;
};

class PasswordEntry final : public TextEntry {
public:
    PasswordEntry(const EntryHost& host, const InputField& field)
        : TextEntry(host, field,
                    std::make_unique<TextBox>(host.form, TwipRect{},
                                              EditStyle(host, field) | ES_PASSWORD, host.onFocus))
    {
        SendMessageW(Edit(), EM_SETPASSWORDCHAR, host.input.passwordChar.front(), 0);
    }

    Answer Value(const std::wstring& text) const override { return Secret(text); }

    // A text of the same length takes the same memory.
    void Forget() override
    {
        box_->SetText(std::wstring(static_cast<size_t>(GetWindowTextLengthW(Edit())), L'*'));
        box_->SetText({});
    }
};

class LinesEntry final : public TextEntry {
public:
    LinesEntry(const EntryHost& host, const InputField& field)
        : TextEntry(host, field,
                    std::make_unique<LinesBox>(host.form, EditStyle(host, field), host.onFocus))
    {
    }

    float Height() override { return kLines * box_->LineHeight() + kEditPadding; }
    bool Grows() const override { return true; }
    bool TakesEnter() const override { return true; }
};

class NumberEntry final : public TextEntry {
public:
    NumberEntry(const EntryHost& host, const InputField& field) : TextEntry(host, field)
    {
        if (InOrder(field.min, field.max)) std::tie(low_, high_) = std::tie(field.min, field.max);
    }

    Answer Value(const std::wstring& text) const override
    {
        const std::optional<double> number = NumberOf(text, decimal_);
        return number ? Variant(*number) : Variant();
    }

private:
    static std::wstring Shown(const std::optional<double>& limit)
    {
        return limit ? ToText(Variant(*limit)) : std::wstring();
    }

    std::wstring FaultOfKind(const std::wstring& text) const override
    {
        const std::optional<double> number = NumberOf(text, decimal_);
        if (number && !(number < low_) && !(high_ && number > high_)) return {};
        return RangeText(L"A number", Shown(low_), Shown(high_));
    }

    const std::wstring decimal_ = UserDecimal();
    std::optional<double> low_, high_;
};

// A path, with a button that shows the system's dialog for it.
class PathEntry final : public TextEntry {
public:
    PathEntry(const EntryHost& host, const InputField& field)
        : TextEntry(host, field), button_(host.form, {}, L"...", [this] { Browse(); })
    {
        const std::wstring label = ShownLabel(host.input, field);
        button_.SetAccessibleName(label.empty() ? L"Browse" : L"Browse: " + label);
        button_.Enable(!field.locked);
    }

    bool Has(HWND window) override { return TextEntry::Has(window) || window == button_.Window(); }

    void Move(const TwipRect& place) override
    {
        const float width = place.width - kButtonGap - kButtonWidth;
        box_->Move({place.left, place.top, width, place.height});
        button_.Move({place.left + width + kButtonGap, place.top, kButtonWidth, place.height});
    }

    // F4, as in a combo box; Enter on the button.
    bool OnKey(const MSG& message) override
    {
        const bool asked = message.message == WM_KEYDOWN && !field_.locked &&
                           (message.wParam == VK_F4 ||
                            (message.wParam == VK_RETURN && message.hwnd == button_.Window()));
        if (asked) Browse();
        return asked;
    }

private:
    void Browse()
    {
        const std::wstring old = Text();
        std::wstring chosen;
        try {
            host_.nest([&] {
                chosen = field_.kind == InputKind::Folder ? AskForFolder(old) : AskForFile(old);
            });
        } catch (const AutomationError&) {
            Seam<Foreground>().beep(MB_ICONERROR); // the platform has no such dialog
        }
        if (host_.form.Closed() || chosen.empty()) return;
        box_->SetText(chosen);
        box_->Focus();
    }

    std::wstring AskForFolder(const std::wstring& old) const
    {
        return Seam<FolderDialogs>().show({host_.form.Window(), old, {}});
    }

    std::wstring AskForFile(const std::wstring& old) const
    {
        std::wstring filter;
        for (const std::wstring& item : field_.items)
            filter.append(item).push_back(L'\0');
        filter.append(2, L'\0');
        const std::wstring folder = IsFullPath(old) ? FolderOf(old) : std::wstring();
        std::wstring path = old.substr(std::min(old.find_last_of(L"\\/:") + 1, old.size()));
        path.resize(kMostPathUnits + 1);

        OPENFILENAMEW dialog{};
        dialog.hwndOwner = host_.form.Window();
        dialog.lpstrFilter = field_.items.empty() ? nullptr : filter.c_str();
        dialog.lpstrFile = path.data();
        dialog.nMaxFile = kMostPathUnits;
        dialog.lpstrInitialDir = folder.empty() || IsDevice(folder) ? nullptr : folder.c_str();
        const FileMode mode = field_.kind == InputKind::OpenFile ? kOpen : kSave;
        bool shown = ShowFileDialog(dialog, mode);
        if (!shown && FileDialogError() == FNERR_INVALIDFILENAME) {
            path.front() = L'\0';
            shown = ShowFileDialog(dialog, mode);
        }
        return shown ? path.c_str() : std::wstring();
    }

    Button button_;
};

class CheckEntry final : public Entry {
public:
    CheckEntry(const EntryHost& host, const InputField& field)
        : Entry(host, field), box_(host.form, field.label, host.input.accessKeys, host.onFocus)
    {
        box_.SetChecked(field.checked);
        SetUp();
    }

    Control& Main() override { return box_; }
    float Height() override { return LineHeightOf(box_); }
    std::wstring Text() const override { return box_.Checked() ? L"True" : L"False"; }
    Answer Value(const std::wstring&) const override { return Variant(box_.Checked()); }

private:
    bool Empty(const std::wstring&) const override { return !box_.Checked(); }
    std::wstring MissingText() const override { return L"This box must be checked."; }

    CheckBox box_;
};

// The lines of a drop-down list.
void Fill(DropDownList& list, const InputField& field)
{
    for (const std::wstring& item : field.items)
        list.Add(item);
}

class ComboEntry final : public Entry {
public:
    ComboEntry(const EntryHost& host, const InputField& field)
        : Entry(host, field), box_(host.form, host.onFocus)
    {
        Fill(box_, field);
        SetUp();
    }

    Control& Main() override { return box_; }
    HWND Edit() const override { return box_.Edit(); }
    float Height() override { return LineHeightOf(box_); }
    void Move(const TwipRect& place) override
    {
        box_.SetClosedHeight(place.height);
        box_.Move(place);
        // The control selects its text whenever it is sized.
        if (GetFocus() != Edit()) OnLeave();
    }
    std::wstring Text() const override { return WindowText(box_.Window()); }
    void OnEnter() override
    {
        SendMessageW(Edit(), EM_SETSEL,
                     host_.input.selectText ? 0 : static_cast<WPARAM>(GetWindowTextLengthW(Edit())),
                     GetWindowTextLengthW(Edit()));
    }
    // Its text box shows the selection even without the focus.
    void OnLeave() override { SendMessageW(Edit(), EM_SETSEL, static_cast<WPARAM>(-1), 0); }
    bool ListOpen() const override { return box_.DroppedDown(); }

private:
    void SetCue() override { box_.SetCue(field_.cueText); }

    ComboBox box_;
};

class ListEntry final : public Entry {
public:
    ListEntry(const EntryHost& host, const InputField& field)
        : Entry(host, field), box_(host.form, {}, CBS_DROPDOWNLIST, host.onFocus)
    {
        Fill(box_, field);
        const auto first = std::ranges::find(field.items, field.text);
        if (first != field.items.end()) box_.Select(static_cast<int>(first - field.items.begin()));
        SetUp();
    }

    Control& Main() override { return box_; }
    float Height() override { return LineHeightOf(box_); }
    void Move(const TwipRect& place) override
    {
        box_.SetClosedHeight(place.height);
        box_.Move(place);
    }
    std::wstring Text() const override
    {
        const int selected = box_.Selected();
        return selected < 0 ? std::wstring() : field_.items[static_cast<size_t>(selected)];
    }
    bool ListOpen() const override { return box_.DroppedDown(); }

private:
    void SetCue() override { box_.SetCue(field_.cueText); }

    DropDownList box_;
};

class DateEntry final : public Entry {
public:
    DateEntry(const EntryHost& host, const InputField& field)
        : Entry(host, field), box_(host.form, host.onFocus)
    {
        SYSTEMTIME today;
        GetLocalTime(&today);
        DATE day = DayOf(field.date.value_or(today));
        if (InOrder(DayOf(field.earliest), DayOf(field.latest))) {
            low_ = DayOf(field.earliest);
            high_ = DayOf(field.latest);
        }
        if (low_) day = std::max(day, *low_);
        if (high_) day = std::min(day, *high_);
        const std::optional<SYSTEMTIME> first = PartsOf(low_);
        const std::optional<SYSTEMTIME> last = PartsOf(high_);
        box_.SetRange(first ? &*first : nullptr, last ? &*last : nullptr);
        box_.Pick(quill::PartsOf(day).value_or(today));
        SetUp();
    }

    Control& Main() override { return box_; }
    float Height() override { return LineHeightOf(box_); }
    std::wstring Text() const override
    {
        const SYSTEMTIME day = box_.Picked();
        wchar_t text[32];
        swprintf(text, std::size(text), L"%04d-%02d-%02d", day.wYear, day.wMonth, day.wDay);
        return text;
    }
    Answer Value(const std::wstring&) const override
    {
        return Variant::OfDate(DayOf(box_.Picked()));
    }

    // An open calendar is a window of its own; not everywhere it hears the keys itself.
    bool OnKey(const MSG& message) override
    {
        if (message.message != WM_KEYDOWN || !box_.DroppedDown()) return false;
        if (message.wParam == VK_RETURN) SendMessageW(box_.Window(), WM_KEYDOWN, VK_RETURN, 0);
        if (message.wParam == VK_ESCAPE) box_.CloseCalendar();
        return message.wParam == VK_RETURN || message.wParam == VK_ESCAPE;
    }
    // An open calendar has a loop of its own.
    bool LeaveLoop() override
    {
        const bool open = box_.DroppedDown();
        if (open) box_.CloseCalendar();
        return open;
    }

private:
    static DATE DayOf(SYSTEMTIME time)
    {
        time.wHour = time.wMinute = time.wSecond = 0;
        return DateOf(time);
    }
    static std::optional<DATE> DayOf(const std::optional<SYSTEMTIME>& time)
    {
        return time ? std::optional(DayOf(*time)) : std::nullopt;
    }
    static std::optional<SYSTEMTIME> PartsOf(const std::optional<DATE>& day)
    {
        return day ? quill::PartsOf(*day) : std::nullopt;
    }
    static std::wstring Shown(const std::optional<DATE>& day)
    {
        wchar_t text[80] = L"";
        if (const std::optional<SYSTEMTIME> parts = PartsOf(day))
            GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &*parts, nullptr, text,
                           std::size(text));
        return text;
    }

    // The picker keeps to its range when its calendar is used; not everywhere when a day is typed.
    std::wstring FaultOfKind(const std::wstring&) const override
    {
        const DATE day = DayOf(box_.Picked());
        if ((!low_ || *low_ <= day) && (!high_ || day <= *high_)) return {};
        return RangeText(L"A date", Shown(low_), Shown(high_));
    }

    std::optional<DATE> low_, high_;
    DateBox box_;
};

template <class Kind>
std::unique_ptr<Entry> Make(const EntryHost& host, const InputField& field)
{
    return std::make_unique<Kind>(host, field);
}

// By InputKind.
constexpr std::unique_ptr<Entry> (*kMakers[])(const EntryHost& host, const InputField& field) = {
    Make<TextEntry>,  Make<PasswordEntry>, Make<LinesEntry>, Make<NumberEntry>,
    Make<CheckEntry>, Make<ComboEntry>,    Make<ListEntry>,  Make<DateEntry>,
    Make<PathEntry>,  Make<PathEntry>,     Make<PathEntry>,
};
static_assert(std::size(kMakers) == static_cast<size_t>(InputKind::Folder) + 1);

} // namespace

HWND Entry::KeyWindow()
{
    const HWND edit = Edit();
    return edit ? edit : Main().Window();
}

bool Entry::Has(HWND window)
{
    return window && (window == Main().Window() || IsChild(Main().Window(), window));
}

void Entry::SetUp()
{
    if (field_.textColor != 0) Main().SetTextColor(field_.textColor);
    if (const HWND edit = Edit()) {
        if (const LONG style = CaseStyle(field_.textStyle))
            AddWindowStyle(edit, style, false, false);
        SHORT limit = 0; // none
        if (host_.input.columns) limit = host_.input.textLimit;
        if (field_.maxLen > 0) limit = std::min(limit, field_.maxLen);
        SendMessageW(edit, EM_SETLIMITTEXT, static_cast<WPARAM>(limit), 0);
        Main().SetText(limit > 0 ? field_.text.substr(0, static_cast<size_t>(limit)) : field_.text);
    }
    if (!field_.cueText.empty()) SetCue();
    if (field_.locked) Lock();
    if (field_.label.empty())
        Main().SetAccessibleName(field_.cueText.empty() ? field_.tipText : field_.cueText);
}

std::wstring Entry::Fault(const std::wstring& text) const
{
    if (Empty(text)) return field_.required ? MissingText() : std::wstring();
    if (Edit() && !field_.pattern.empty() && !FitsMask(text, field_.pattern))
        return L"An entry like " + std::wstring(CutForDisplay(field_.pattern, kShownMask)) +
               L" is needed here.";
    return FaultOfKind(text);
}

std::wstring Entry::MissingText() const
{
    return L"This field must be filled in.";
}

std::wstring ShownLabel(const InputSettings& input, const InputField& field)
{
    std::wstring label = field.label;
    const size_t mark = input.accessKeys ? label.find(L'&') : std::wstring::npos;
    return mark == std::wstring::npos ? label : label.erase(mark, 1);
}

std::unique_ptr<Entry> MakeEntry(const EntryHost& host, const InputField& field, InputKind kind)
{
    return kMakers[static_cast<size_t>(kind)](host, field);
}

} // namespace quill
