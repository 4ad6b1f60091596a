#include "dialogs/List.h"

#include "core/Catalogue.h"
#include "core/Text.h"
#include "dialogs/frmListBox.h"
#include "dialogs/frmListView.h"

namespace quill {

namespace {

// More headings are not shown.
constexpr size_t kMostColumns = 64;

// The list view keeps the selected rows in ranges. Many of them take it long: in proportion to the
// square of their number.
constexpr size_t kMostSelected = 100'000;

std::vector<std::wstring> HeadingsIn(const VARIANT& columns)
{
    std::vector<std::wstring> headings;
    if (const SAFEARRAY* array = ArrayOf(columns))
        for (const Variant& heading : ElementsOf(*array, kMostColumns))
            headings.push_back(TextIn(heading).value_or(std::wstring()));
    return headings;
}

} // namespace

CREATABLE(List)

std::wstring List::Selection(std::wstring items, LONG index, const std::wstring& title)
{
    Showing showing(*this);
    if (items.empty()) return {};
    Choices choices(std::move(items));
    if (index >= 0) choices.Choose(static_cast<size_t>(index));
    const bool multi = multiSel_;
    Show(choices, showing.Request(), multi, title);
    std::wstring chosen;
    for (size_t line : choices.Chosen()) {
        chosen += choices.Text(line);
        if (multi) chosen += kLineBreak;
    }
    return chosen;
}

LONG List::SelectionA(VARIANT& items, VARIANT& selected, const std::wstring& title)
{
    Showing showing(*this);
    auto elements = ElementsOfAny(items, kMostElements);
    if (!elements || elements->empty()) return 0;
    Choices choices(*std::move(elements), Choices::EmptyLines::Shown);
    const bool multi = multiSel_;
    choices.ChooseAt(selected, kMostSelected, !multi);
    Show(choices, showing.Request(), multi, title);
    return static_cast<LONG>(choices.Chosen().size());
}

void List::Show(Choices& choices, DialogRequest request, bool multi, const std::wstring& title)
{
    const std::vector<std::wstring> headings = HeadingsIn(columns_);
    Ask(choices, [&] {
        if (filter_ || !headings.empty())
            return frmListView(std::move(request), multi, filter_).Choose(choices, headings, title);
        return frmListBox(std::move(request), multi).LBox(choices, title);
    });
}

} // namespace quill
