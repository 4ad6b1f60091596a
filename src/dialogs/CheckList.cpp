#include "dialogs/CheckList.h"

#include <algorithm>

#include "core/Catalogue.h"
#include "core/Text.h"
#include "core/quillfn.h"
#include "dialogs/frmCheckListBox.h"

namespace quill {

namespace {

// One less than the bits of a positive Long.
constexpr size_t kMostLines = 30;

// The elements of a zero-based array of up to 30; nothing for anything else.
std::optional<std::vector<Variant>> LineArray(const VARIANT& value)
{
    const SAFEARRAY* array = ArrayOf(value);
    if (!array || array->cDims != 1 || array->rgsabound[0].lLbound != 0 ||
        array->rgsabound[0].cElements > kMostLines)
        return std::nullopt;
    try {
        return ElementsIn(value);
    } catch (const AutomationError&) {
        return std::nullopt; // elements without a meaning here
    }
}

// A number, or a text that is one, other than 0.
bool IsChecked(const VARIANT& state)
{
    Variant number = Variant::Dereferenced(state);
    return (IsNumericType(V_VT(&number)) || V_VT(&number) == VT_BSTR) &&
           SUCCEEDED(VariantChangeType(&number, &number, 0, VT_R8)) && V_R8(&number) != 0;
}

LONG BitsOf(const Choices& choices)
{
    LONG bits = 0;
    for (size_t line : choices.Chosen())
        bits |= 1L << line;
    return bits;
}

} // namespace

CREATABLE(CheckList)

LONG CheckList::Selection(const std::wstring& items, LONG checked, const std::wstring& title)
{
    Showing showing(*this);
    if (items.empty()) return 0;
    const std::vector<std::wstring> lines = SplitLines(items);
    if (lines.size() > kMostLines) return 0;
    Choices choices(items);
    // Kept as published: bit i checks the shown line i, but only where the given line i is not
    // empty. The two differ behind an empty line, which is not shown. So do states, below.
    for (size_t line = 0; line < lines.size(); ++line)
        if ((checked & 1L << line) && !lines[line].empty()) choices.Choose(line);
    Show(choices, showing.Request(), title);
    return BitsOf(choices);
}

LONG CheckList::SelectionA(VARIANT& items, VARIANT& indices, const std::wstring& title)
{
    Showing showing(*this);
    auto values = LineArray(items);
    if (!values || values->empty()) return 0;
    std::optional<std::vector<Variant>> states(std::in_place);
    const bool missing = V_VT(&indices) == VT_ERROR && V_ERROR(&indices) == DISP_E_PARAMNOTFOUND;
    if (!missing) states = LineArray(indices);
    if (!states) return 0;

    const size_t given = values->size();
    Choices choices(*std::move(values), Choices::EmptyLines::LeftOut);
    for (size_t line = 0; line < std::min(given, states->size()); ++line)
        if (IsChecked((*states)[line]) && choices.HasLineFor(line)) choices.Choose(line);
    Show(choices, showing.Request(), title);
    return BitsOf(choices);
}

LONG CheckList::SelectionEx(VARIANT& items, VARIANT& checked, const std::wstring& title)
{
    Showing showing(*this);
    auto elements = ElementsOfAny(items, kMostElements);
    if (!elements || elements->empty()) return 0;
    Choices choices(*std::move(elements), Choices::EmptyLines::Shown);
    choices.ChooseAt(checked, kMostElements, false);
    Show(choices, showing.Request(), title);
    return static_cast<LONG>(choices.Chosen().size());
}

void CheckList::Show(Choices& choices, DialogRequest request, const std::wstring& title)
{
    Ask(choices,
        [&] { return frmCheckListBox(std::move(request), filter_).CLBox(choices, title); });
}

} // namespace quill
