#include "dialogs/frmMIB.h"

#include <algorithm>

#include "core/Apartment.h"
#include "gui/TimerFn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// Twips.
constexpr float kWidth = 6000;
constexpr float kMargin = 240;
constexpr float kGap = 120;
constexpr float kEditPadding = 120;  // of an edit control, around its line
constexpr float kLabelTop = 60;      // from the field's top to the label's
constexpr float kMostLabelLines = 4; // beside a field; more are cut
constexpr float kTipLines = 2;
constexpr float kLeastHeight = 2000; // of the window; it scrolls then

constexpr int kBigPoints = 12;
constexpr float kTipWidth = 6000; // twips; longer tips wrap

// InputSettings::tips
constexpr SHORT kTipBalloon = 1;
constexpr SHORT kTipLine = 2;

constexpr SHORT kDigits = 3; // InputField::textStyle

constexpr wchar_t kDigitsOnly[] = L"Only digits can be entered here.";

// What the line of tips says of a field that is too short when a script gives no text for it.
std::wstring TooShortText(SHORT minLen)
{
    return L"At least " + std::to_wstring(minLen) +
           (minLen == 1 ? L" character is needed here." : L" characters are needed here.");
}

constexpr DWORD LabelStyle(const InputSettings& input)
{
    constexpr DWORD alignments[] = {SS_LEFT, SS_RIGHT, SS_CENTER};
    return alignments[input.alignLabel] | (input.accessKeys ? 0 : SS_NOPREFIX);
}

bool HidesText(const InputSettings& input, size_t index)
{
    return (input.flags & 1 << index) != 0;
}

DWORD EditStyle(const InputSettings& input, size_t index, const InputField& field)
{
    constexpr DWORD alignments[] = {ES_LEFT, ES_RIGHT, ES_CENTER};
    DWORD style = alignments[input.alignInput];
    if (HidesText(input, index)) style |= ES_PASSWORD;
    if (field.locked) style |= ES_READONLY;
    return style;
}

LONG CaseStyle(SHORT textStyle)
{
    switch (textStyle) {
    case 1: return ES_UPPERCASE;
    case 2: return ES_LOWERCASE;
    case kDigits: return ES_NUMBER;
    default: return 0;
    }
}

bool HasDigitsOnly(const std::wstring& text)
{
    return std::ranges::all_of(text, [](wchar_t unit) { return unit >= L'0' && unit <= L'9'; });
}

// A balloon that points at what is wrong in a field.
void ShowBalloon(HWND edit, const std::wstring& title, const std::wstring& text)
{
    EDITBALLOONTIP tip{};
    tip.cbStruct = sizeof tip;
    tip.pszTitle = title.empty() ? nullptr : title.c_str();
    tip.pszText = text.empty() ? nullptr : text.c_str();
    tip.ttiIcon = TTI_ERROR;
    SendMessageW(edit, EM_SHOWBALLOONTIP, 0, reinterpret_cast<LPARAM>(&tip));
}

} // namespace

frmMIB::Row::Row(frmMIB& form, size_t index, const InputField& field)
    : design(field), label(form, {}, field.label.c_str(), LabelStyle(form.input_)),
      edit(form, {}, EditStyle(form.input_, index, field),
           [&form, index](bool entered) { form.OnFieldFocus(index, entered); })
{
    const InputSettings& input = form.input_;
    const HWND window = edit.Window();
    if (design.labelColor != 0) label.SetTextColor(design.labelColor);
    if (design.textColor != 0) edit.SetTextColor(design.textColor);
    if (const LONG style = CaseStyle(design.textStyle)) AddWindowStyle(window, style, false, false);
    if (HidesText(input, index))
        SendMessageW(window, EM_SETPASSWORDCHAR, input.passwordChar.front(), 0);
    LimitText(input);
    if (!design.cueText.empty())
        SendMessageW(window, EM_SETCUEBANNER, input.cueAtFocus ? 1 : 0,
                     reinterpret_cast<LPARAM>(design.cueText.c_str()));
    if (design.label.empty())
        edit.SetAccessibleName(design.cueText.empty() ? design.tipText : design.cueText);
}

// Sets the text, and how long it may be.
void frmMIB::Row::LimitText(const InputSettings& input)
{
    SHORT limit = 0; // none
    if (input.columns) limit = input.textLimit;
    if (design.maxLen > 0) limit = std::min(limit, design.maxLen);
    SendMessageW(edit.Window(), EM_SETLIMITTEXT, static_cast<WPARAM>(limit), 0);
    edit.SetText(limit > 0 ? design.text.substr(0, static_cast<size_t>(limit)) : design.text);
}

frmMIB::frmMIB(DialogRequest request, const InputSettings& input,
               const std::vector<InputField>& fields)
    : DialogForm({L"QUILL Multi-InputBox",
                  {kWidth, kWidth},
                  kSizableStyle & ~WS_MAXIMIZEBOX,
                  kWidth - 2 * kMargin},
                 std::move(request)),
      input_(input), rows_(MakeRows(fields))
{
}

std::vector<std::unique_ptr<frmMIB::Row>> frmMIB::MakeRows(const std::vector<InputField>& fields)
{
    std::vector<std::unique_ptr<Row>> rows;
    rows.reserve(fields.size());
    for (const InputField& field : fields)
        rows.push_back(std::make_unique<Row>(*this, rows.size(), field));
    return rows;
}

bool frmMIB::Ask(const std::wstring& title, UINT milliseconds)
{
    Prepare(title);
    if (input_.bigInfo) {
        FontSpec big = lblText.CurrentFont();
        big.points = kBigPoints;
        lblText.SetFont(big);
    }
    lblTip.SetVisible(input_.tips == kTipLine);
    if (input_.tips != kTipLine) AddTips();

    frame_ = OuterSize().height - InnerSize().height;
    Measure();
    height_ = LayOut(InnerSize().width);
    wider_ = WidthSurplus(InnerSize().width - 2 * kMargin);
    PlaceAtCentre({kWidth + wider_, height_ + frame_});
    SetContentHeight(height_);
    const auto start = static_cast<size_t>(input_.start);
    SetFirstFocus(rows_[start < rows_.size() ? start : 0]->edit);
    if (milliseconds != 0) {
        void* entry = BuildPushParamThunk(thunk_, this, reinterpret_cast<void*>(OnTimer));
        timer_ = StartTimer(milliseconds, entry);
    }
    return DialogForm::Ask();
}

void CALLBACK frmMIB::OnTimer(frmMIB* self, HWND, UINT, UINT_PTR, DWORD) noexcept
{
    self->StopTimer();
    self->EndByTime(false);
}

void frmMIB::StopTimer() noexcept
{
    if (timer_ != 0) quill::StopTimer(timer_);
    timer_ = 0;
}

// The window of the tips goes with the form, whose own it is.
void frmMIB::AddTips()
{
    const DWORD style = WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX |
                        static_cast<DWORD>(input_.tips == kTipBalloon ? TTS_BALLOON : 0);
    const HWND tips = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, style, 0, 0, 0, 0,
                                      Window(), nullptr, GetModuleHandleW(nullptr), nullptr);
    if (!tips) return;
    SendMessageW(tips, TTM_SETMAXTIPWIDTH, 0, ToPixels(kTipWidth));
    for (const auto& row : rows_) {
        if (row->design.tipText.empty()) continue;
        TOOLINFOW tool{};
        tool.cbSize = sizeof tool;
        tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
        tool.hwnd = Window();
        tool.uId = reinterpret_cast<UINT_PTR>(row->edit.Window());
        tool.lpszText = const_cast<wchar_t*>(row->design.tipText.c_str());
        SendMessageW(tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

void frmMIB::OnFieldFocus(size_t index, bool entered)
{
    if (entered) {
        lblTip.SetText(rows_[index]->design.tipText);
        PlaceCaret(*rows_[index]);
    } else if (!refused_) {
        PostTo(Window(), index); // once the focus is where it goes
    }
}

void frmMIB::OnFocusMoved(Control& control)
{
    DialogForm::OnFocusMoved(control);
    // The platform selects the text of a field that the keyboard leads to.
    for (const auto& row : rows_)
        if (&row->edit == &control) PlaceCaret(*row);
}

void frmMIB::PlaceCaret(Row& row)
{
    row.edit.Select(input_.selectText ? 0 : -1, -1);
}

// The user has left a field. One that is too short keeps the focus, unless the user has turned to
// another window.
void frmMIB::OnPosted(WPARAM index)
{
    if (input_.columns && index < rows_.size() && IsChild(Window(), GetFocus()) &&
        TooShort(*rows_[index]))
        Refuse(*rows_[index], input_.balloonTitle, input_.balloonText);
}

bool frmMIB::TooShort(const Row& row)
{
    return !row.design.locked &&
           GetWindowTextLengthW(row.edit.Window()) < static_cast<int>(row.design.minLen);
}

void frmMIB::Refuse(Row& row, const std::wstring& title, const std::wstring& text)
{
    refused_ = true; // the field that loses the focus now is not to be looked at
    row.edit.Focus();
    refused_ = false;
    ShowBalloon(row.edit.Window(), title, text);
    if (text.empty()) Seam<Foreground>().beep(MB_ICONERROR); // there is no balloon to see
    // The line has the field's tip again when the focus comes back.
    if (input_.tips == kTipLine)
        lblTip.SetText(text.empty() ? TooShortText(row.design.minLen) : text);
}

bool frmMIB::OnAccept()
{
    std::vector<std::wstring> texts;
    texts.reserve(rows_.size());
    for (const auto& row : rows_) {
        texts.push_back(row->edit.Text());
        if (!input_.columns) continue;
        if (TooShort(*row)) {
            Refuse(*row, input_.balloonTitle, input_.balloonText);
            return false;
        }
        // The control itself looks at typing only, not at what is pasted.
        const bool digits = input_.checkDigits && row->design.textStyle == kDigits;
        if (digits && !row->design.locked && !HasDigitsOnly(texts.back())) {
            Refuse(*row, {}, kDigitsOnly);
            return false;
        }
    }
    texts_ = std::move(texts);
    return true;
}

// The heights that the texts need at the least width.
void frmMIB::Measure()
{
    const float width = InnerSize().width - 2 * kMargin;
    const auto heightAt = [](Label& label, float labelWidth, float most) {
        label.Move({0, 0, labelWidth, 0});
        return std::clamp(label.HeightOfText(), label.LineHeight(), most);
    };
    infoTextHeight_ = Settings().info.empty() ? 0 : heightAt(lblText, width, kMaximumInfoHeight);
    for (const auto& row : rows_) {
        row->editHeight = row->edit.LineHeight() + kEditPadding;
        if (input_.columns)
            row->labelHeight =
                heightAt(row->label, LabelWidth(width), kMostLabelLines * row->label.LineHeight());
        else if (!row->design.label.empty())
            row->labelHeight = heightAt(row->label, width, kMaximumInfoHeight);
    }
}

float frmMIB::LabelWidth(float width) const
{
    return (width - kGap) * static_cast<float>(input_.labelEditRatio) / 8;
}

float frmMIB::LayOut(float inner)
{
    const float width = inner - 2 * kMargin;
    float top = kMargin;
    if (infoTextHeight_ > 0) {
        lblText.Move({kMargin, top, width, infoTextHeight_});
        top += infoTextHeight_ + kMargin;
    }
    for (const auto& row : rows_) {
        if (input_.columns) {
            const float left = kMargin + LabelWidth(width) + kGap;
            row->label.Move({kMargin, top + kLabelTop, LabelWidth(width), row->labelHeight});
            row->edit.Move({left, top, kMargin + width - left, row->editHeight});
            top += std::max(row->editHeight, row->labelHeight + kLabelTop) + kGap;
        } else {
            row->label.Move({kMargin, top, width, row->labelHeight});
            if (row->labelHeight > 0) top += row->labelHeight + kGap;
            row->edit.Move({kMargin, top, width, row->editHeight});
            top += row->editHeight + kGap;
        }
    }
    if (input_.tips == kTipLine) {
        const float height = kTipLines * lblTip.LineHeight();
        lblTip.Move({kMargin, top, width, height});
        top += height + kGap;
    }
    PlaceButtons({kMargin + width - ButtonWidth(), top + kGap, ButtonWidth(), kButtonHeight});
    return top + kGap + kButtonHeight + kMargin;
}

void frmMIB::OnResize(TwipSize)
{
    if (height_ > 0) LayOut(InnerSize().width);
}

TwipSize frmMIB::MinimumSize() const
{
    return {kWidth + wider_, kLeastHeight};
}

TwipSize frmMIB::MaximumSize() const
{
    return {0, height_ > 0 ? height_ + frame_ : 0};
}

} // namespace quill
