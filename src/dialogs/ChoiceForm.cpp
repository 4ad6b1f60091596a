#include "dialogs/ChoiceForm.h"

#include <windowsx.h>

#include <algorithm>

namespace quill {

namespace {

// Twips: the box is higher than its text, and there is a gap between box and list.
constexpr float kBoxPadding = 120;
constexpr float kBelowBox = 100;

// The window takes no more of the screen for its lines.
constexpr float kOpeningShare = 0.6F;

} // namespace

ChoiceForm::FilterBox::FilterBox(Form& form, std::function<void()> onChange)
    : TextBox(form, kDesign.list), onChange_(std::move(onChange))
{
    SetAccessibleName(L"Filter");
    Send(EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(L"Filter"));
}

void ChoiceForm::FilterBox::OnCommand(WORD code)
{
    if (code == EN_CHANGE) onChange_();
}

// As if the box already had the focus.
void ChoiceForm::FilterBox::Type(wchar_t unit)
{
    Focus();
    Select(-1, -1);
    Send(WM_CHAR, unit);
}

ChoiceForm::ChoiceForm(const wchar_t* caption, DialogRequest request, ChoiceView::Kind kind,
                       bool filter)
    : ListForm(caption, std::move(request)), kind_(kind),
      filter_(filter ? std::make_unique<FilterBox>(*this, [this] { OnFilter(); }) : nullptr),
      view_(*this, kDesign.list, kind,
            {[this] { Accept(); },
             filter ? std::function<void(wchar_t)>([this](wchar_t unit) { filter_->Type(unit); })
                    : nullptr})
{
}

bool ChoiceForm::Choose(Choices& choices, const std::vector<std::wstring>& headings,
                        const std::wstring& title)
{
    choices_ = &choices;
    widens_ = !headings.empty();
    view_.Fill(choices, headings);
    Prepare(title, view_);
    view_.ShowRows();
    if (filter_) SetFirstFocus(*filter_);
    return Ask();
}

bool ChoiceForm::OnAccept()
{
    view_.Collect();
    // A user who has narrowed the list down to one line means that line.
    if (kind_ == ChoiceView::Kind::Single && choices_->Rows() == 1 && filter_ &&
        !filter_->Text().empty() && choices_->Chosen().empty())
        choices_->Choose(choices_->LineOf(0));
    return true;
}

void ChoiceForm::OnFilter()
{
    view_.Collect();
    choices_->SetFilter(filter_->Text());
    view_.ShowRows();
}

bool ChoiceForm::OnPreview(const MSG& message)
{
    if (filter_ && message.message == WM_KEYDOWN) {
        if (message.wParam == VK_DOWN && message.hwnd == filter_->Window()) {
            view_.Enter();
            return true;
        }
        if (message.wParam == VK_ESCAPE && !filter_->Text().empty()) {
            filter_->SetText({});
            return true;
        }
    }
    return ListForm::OnPreview(message);
}

LRESULT ChoiceForm::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_CONTEXTMENU || reinterpret_cast<HWND>(wParam) != view_.Window())
        return ListForm::Handle(message, wParam, lParam);
    view_.ShowMenu({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
    return 0;
}

float ChoiceForm::HeightAboveList() const
{
    return filter_ ? filter_->LineHeight() + kBoxPadding + kBelowBox : 0;
}

void ChoiceForm::PlaceList(const TwipRect& room)
{
    const float above = HeightAboveList();
    if (filter_) filter_->Move({room.left, room.top, room.width, above - kBelowBox});
    view_.Move({room.left, room.top + above, room.width, room.height - above});
}

TwipSize ChoiceForm::OpeningSize() const
{
    const TwipSize least = MinimumSize();
    if (!widens_) return least;
    const TwipSize around = AroundList();
    const TwipSize lines = view_.WantedSize();
    const TwipSize screen = ScreenRoom();
    const auto between = [](float smallest, float wanted, float largest) {
        return std::max(smallest, std::min(wanted, largest));
    };
    return {between(least.width, around.width + lines.width, screen.width * kOpeningShare),
            between(least.height, around.height + lines.height, screen.height * kOpeningShare)};
}

} // namespace quill
