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
constexpr float kLabelTop = 60;      // from the field's top to the label's
constexpr float kMostLabelLines = 4; // beside a field; more are cut
constexpr float kCheckMark = 300;    // of a check box, with its distance from the caption
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

// Kept as published: the flags make passwords of texts.
InputKind KindOf(const InputSettings& input, size_t index, const InputField& field)
{
    const bool hidden = (input.flags & 1 << index) != 0;
    return hidden && field.kind == InputKind::Text ? InputKind::Password : field.kind;
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
      entry(MakeEntry({form, form.input_,
                       [&form, index](bool entered) { form.OnFieldFocus(index, entered); },
                       [&form](const auto& show) { form.Nest(show); }},
                      design, KindOf(form.input_, index, field)))
{
    if (design.labelColor != 0) label.SetTextColor(design.labelColor);
    if (design.kind == InputKind::CheckBox) label.SetVisible(false); // the box has its own caption
}

frmMIB::frmMIB(DialogRequest request, const InputSettings& input,
               const std::vector<InputField>& fields)
    : DialogForm({L"QUILL Multi-InputBox",
                  {kWidth, kWidth},
                  kSizableStyle & ~WS_MAXIMIZEBOX,
                  kWidth - 2 * kMargin},
                 std::move(request)),
      input_(input), texts_(fields.size()), rows_(MakeRows(fields))
{
    texts_.texts.resize(fields.size());
}

frmMIB::~frmMIB()
{
    StopTimer();
    Unload(); // while the rows still exist
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
    height_ = LayOut(InnerSize().width, 0);
    wider_ = WidthSurplus(InnerSize().width - 2 * kMargin);
    PlaceAtCentre({kWidth + wider_, height_ + frame_});
    SetContentHeight(height_);
    const auto start = static_cast<size_t>(input_.start);
    const Control& first = rows_[start < rows_.size() ? start : 0]->entry->Main();
    if (IsWindowEnabled(first.Window())) SetFirstFocus(first);
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

void frmMIB::AddTips()
{
    const HWND tips = MakeTipWindow(*this, kTipWidth, input_.tips == kTipBalloon);
    if (!tips) return;
    for (const auto& row : rows_) {
        if (row->design.tipText.empty()) continue;
        TOOLINFOW tool{};
        tool.cbSize = sizeof tool;
        tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
        tool.hwnd = Window();
        tool.uId = reinterpret_cast<UINT_PTR>(row->entry->KeyWindow());
        tool.lpszText = const_cast<wchar_t*>(row->design.tipText.c_str());
        SendMessageW(tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
}

void frmMIB::OnFieldFocus(size_t index, bool entered)
{
    Entry& entry = *rows_[index]->entry;
    if (entered) {
        lblTip.SetText(rows_[index]->design.tipText);
        entry.OnEnter();
        return;
    }
    entry.OnLeave();
    if (!refused_) PostTo(Window(), index); // checked once the focus has arrived
}

void frmMIB::OnFocusMoved(Control& control)
{
    DialogForm::OnFocusMoved(control);
    // The platform selects the text of a field that the keyboard leads to.
    for (const auto& row : rows_)
        if (&row->entry->Main() == &control) row->entry->OnEnter();
}

LRESULT frmMIB::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_MOVE:
    case WM_ACTIVATE: balloon_.Hide(); break;
    case WM_DESTROY: // the controls are still there
        for (const auto& row : rows_)
            row->entry->Forget();
        break;
    default: break;
    }
    return DialogForm::Handle(message, wParam, lParam);
}

bool frmMIB::OnPreview(const MSG& message)
{
    if (message.message == WM_KEYDOWN || message.message == WM_LBUTTONDOWN) balloon_.Hide();
    for (const auto& row : rows_) {
        if (!row->entry->Has(message.hwnd)) continue;
        if (row->entry->OnKey(message)) return true;
        if (row->entry->ListOpen()) return false;
        // Not every control lets the form have Enter.
        if (message.message == WM_KEYDOWN && message.wParam == VK_RETURN &&
            (!row->entry->TakesEnter() || GetKeyState(VK_CONTROL) < 0)) {
            Accept();
            return true;
        }
    }
    return DialogForm::OnPreview(message);
}

bool frmMIB::LeaveLoop()
{
    return std::ranges::any_of(rows_, [](const auto& row) { return row->entry->LeaveLoop(); }) ||
           DialogForm::LeaveLoop();
}

// The user has left a field. One that is too short keeps the focus, unless the user has turned to
// another window, or to the button beside it.
void frmMIB::OnPosted(WPARAM index)
{
    const HWND focus = GetFocus();
    if (input_.columns && index < rows_.size() && IsChild(Window(), focus) &&
        !rows_[index]->entry->Has(focus) && TooShort(*rows_[index]))
        RefuseTooShort(*rows_[index]);
}

bool frmMIB::TooShort(const Row& row)
{
    const HWND edit = row.entry->Edit();
    return edit && !row.design.locked &&
           GetWindowTextLengthW(edit) < static_cast<int>(row.design.minLen);
}

void frmMIB::RefuseTooShort(Row& row)
{
    Refuse(row, input_.balloonTitle, input_.balloonText, false);
}

void frmMIB::Refuse(Row& row, const std::wstring& title, std::wstring text, bool beep)
{
    if (!row.design.errorText.empty()) {
        text = row.design.errorText;
        beep = true;
    }
    refused_ = true; // the field that loses the focus now is not checked
    row.entry->Main().Focus();
    refused_ = false;
    if (const HWND edit = row.entry->Edit())
        ShowBalloon(edit, title, text);
    else
        balloon_.Show(*this, row.entry->KeyWindow(), title, text);
    // Without a text there is no balloon to see.
    if (beep || text.empty()) Seam<Foreground>().beep(MB_ICONERROR);
    // The line has the field's tip again when the focus comes back.
    if (input_.tips == kTipLine)
        lblTip.SetText(text.empty() ? TooShortText(row.design.minLen) : text);
}

std::wstring frmMIB::FaultOf(size_t index, const std::vector<std::wstring>& texts) const
{
    const Row& row = *rows_[index];
    std::wstring fault = row.entry->Fault(texts[index]);
    const auto other = static_cast<size_t>(row.design.sameAs); // beyond all others when below 0
    if (!fault.empty() || other >= texts.size() || texts[index] == texts[other]) return fault;
    const std::wstring label = ShownLabel(input_, rows_[other]->design);
    return L"This must be the same as " +
           (label.empty() ? L"field " + std::to_wstring(other + 1) : L'"' + label + L'"') + L'.';
}

bool frmMIB::OnAccept()
{
    PassingTexts entered(rows_.size());
    for (const auto& row : rows_) {
        const PassingText text(row->entry->Text());
        entered.texts.push_back(text.text);
    }
    std::vector<Answer> answers;
    for (size_t index = 0; index < rows_.size(); ++index) {
        Row& row = *rows_[index];
        const std::wstring& text = entered.texts[index];
        answers.push_back(row.entry->Value(text));
        if (!input_.columns || row.design.locked) continue;
        if (TooShort(row)) {
            RefuseTooShort(row);
            return false;
        }
        // The control itself looks at typing only, not at what is pasted.
        if (input_.checkDigits && row.design.textStyle == kDigits && row.entry->Edit() &&
            !HasDigitsOnly(text)) {
            Refuse(row, {}, kDigitsOnly, false);
            return false;
        }
        if (const std::wstring fault = FaultOf(index, entered.texts); !fault.empty()) {
            Refuse(row, {}, fault, true);
            return false;
        }
    }
    std::swap(texts_.texts, entered.texts);
    answers_ = std::move(answers);
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
        row->entryHeight = row->entry->Height();
        const float mostLabel = kMostLabelLines * row->label.LineHeight();
        if (row->design.kind == InputKind::CheckBox) {
            const float captionWidth = width - LabelWidth(width) - kGap - kCheckMark;
            const float caption = heightAt(row->label, captionWidth, mostLabel);
            row->entryHeight = std::max(row->entryHeight, caption);
            continue;
        }
        if (input_.columns)
            row->labelHeight = heightAt(row->label, LabelWidth(width), mostLabel);
        else if (!row->design.label.empty())
            row->labelHeight = heightAt(row->label, width, kMaximumInfoHeight);
    }
}

float frmMIB::LabelWidth(float width) const
{
    return (width - kGap) * static_cast<float>(input_.labelEditRatio) / 8;
}

ptrdiff_t frmMIB::Growing() const
{
    return std::ranges::count_if(rows_, [](const auto& row) { return row->entry->Grows(); });
}

float frmMIB::LayOut(float inner, float spare)
{
    const float share = spare / static_cast<float>(std::max<ptrdiff_t>(1, Growing()));
    const float width = inner - 2 * kMargin;
    float top = kMargin;
    if (infoTextHeight_ > 0) {
        lblText.Move({kMargin, top, width, infoTextHeight_});
        top += infoTextHeight_ + kMargin;
    }
    for (const auto& row : rows_) {
        const float entryHeight = row->entryHeight + (row->entry->Grows() ? share : 0);
        if (input_.columns) {
            const float left = kMargin + LabelWidth(width) + kGap;
            row->label.Move({kMargin, top + kLabelTop, LabelWidth(width), row->labelHeight});
            row->entry->Move({left, top, kMargin + width - left, entryHeight});
            top += std::max(entryHeight, row->labelHeight + kLabelTop) + kGap;
        } else {
            row->label.Move({kMargin, top, width, row->labelHeight});
            if (row->labelHeight > 0) top += row->labelHeight + kGap;
            row->entry->Move({kMargin, top, width, entryHeight});
            top += entryHeight + kGap;
        }
    }
    if (input_.tips == kTipLine) {
        const float height = kTipLines * lblTip.LineHeight();
        lblTip.Move({kMargin, top, width, height});
        top += height + kGap;
    }
    PlaceButtons({kMargin + width - ButtonWidth(), top + kGap, ButtonWidth(), kButtonHeight});
    return top + kGap + kButtonHeight + kMargin - spare;
}

void frmMIB::OnResize(TwipSize)
{
    if (height_ == 0) return;
    const TwipSize inner = InnerSize();
    LayOut(inner.width, Growing() > 0 ? std::max(0.0F, inner.height - height_) : 0);
}

TwipSize frmMIB::MinimumSize() const
{
    return {kWidth + wider_, kLeastHeight};
}

TwipSize frmMIB::MaximumSize() const
{
    return {0, height_ > 0 && Growing() == 0 ? height_ + frame_ : 0};
}

} // namespace quill
