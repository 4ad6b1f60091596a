#include "dialogs/ListForm.h"

#include <algorithm>

#include "gui/windowfn.h"

namespace quill {

ListForm::ListForm(const wchar_t* caption, const DialogSettings& settings)
    : DialogForm(caption, MinimumListSize(kInfoHeight), kSizableStyle), settings_(settings)
{
}

void ListForm::Prepare(const std::wstring& title)
{
    Apply(settings_, title, lblText, Accepting());
    ShownList().SetAccessibleName(settings_.info.empty() ? TextOf(Window()) : settings_.info);
    PlaceAtCentre(MinimumSize());
}

void ListForm::Ask(const std::function<bool()>& abandoned)
{
    Show(settings_.topmost);
    WaitUntilClosed(abandoned);
}

void ListForm::OnActivate()
{
    ShownList().Focus();
}

void ListForm::OnResize(TwipSize outer)
{
    // Window managers, and callers that skip the question for it, ignore the tracking limits.
    const TwipSize smallest = MinimumSize();
    if (ToPixels(outer.width) < ToPixels(smallest.width) ||
        ToPixels(outer.height) < ToPixels(smallest.height)) {
        outer = {std::max(outer.width, smallest.width), std::max(outer.height, smallest.height)};
        SetOuterSize(outer);
    }
    const ListLayout layout = LayOutList(outer, InfoHeight(), ButtonWidth());
    lblText.Move(layout.label);
    ShownList().Move(layout.list);
    Accepting().Move(layout.button);
}

TwipSize ListForm::MinimumSize() const
{
    return MinimumListSize(InfoHeight());
}

} // namespace quill
