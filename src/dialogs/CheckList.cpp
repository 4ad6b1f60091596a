#include "dialogs/CheckList.h"

#include <optional>
#include <vector>

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
        return ElementsOf(*array, kMostLines);
    } catch (const AutomationError&) {
        return std::nullopt; // elements without a meaning here
    }
}

// The text of a line; an empty one, which is not shown, for what has no text.
std::wstring TextOfLine(const VARIANT& line)
{
    try {
        return ToText(line);
    } catch (const AutomationError&) {
        return {};
    }
}

// A number, or a text that is one, other than 0.
bool IsChecked(const VARIANT& state)
{
    Variant number = Variant::Dereferenced(state);
    return (IsNumericType(V_VT(&number)) || V_VT(&number) == VT_BSTR) &&
           SUCCEEDED(VariantChangeType(&number, &number, 0, VT_R8)) && V_R8(&number) != 0;
}

} // namespace

CREATABLE(CheckList)

LONG CheckList::Selection(const std::wstring& items, LONG checked, const std::wstring& title)
{
    Showing showing(*this);
    if (items.empty()) return 0;
    const std::vector<std::wstring> lines = SplitLines(items);
    if (lines.size() > kMostLines) return 0;
    return frmCheckListBox(showing.Request()).CLBox(lines, checked, title);
}

LONG CheckList::SelectionA(VARIANT& items, VARIANT& indices, const std::wstring& title)
{
    Showing showing(*this);
    const auto values = LineArray(items);
    if (!values || values->empty()) return 0;
    std::optional<std::vector<Variant>> states(std::in_place);
    const bool missing = V_VT(&indices) == VT_ERROR && V_ERROR(&indices) == DISP_E_PARAMNOTFOUND;
    if (!missing) states = LineArray(indices);
    if (!states) return 0;

    std::vector<std::wstring> lines;
    LONG checked = 0;
    for (size_t index = 0; index < values->size(); ++index) {
        lines.push_back(TextOfLine((*values)[index]));
        if (index < states->size() && IsChecked((*states)[index])) checked |= 1L << index;
    }
    return frmCheckListBox(showing.Request()).CLBox(lines, checked, title);
}

} // namespace quill
