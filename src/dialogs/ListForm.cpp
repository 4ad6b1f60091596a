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
    // Window managers ignore the tracking limits. They are answered later, since they hear nothing
    // from inside their own change, and once: one that insists has its way.
    const TwipSize smallest = MinimumSize();
    const bool tooSmall = ToPixels(outer.width) < ToPixels(smallest.width) ||
                          ToPixels(outer.height) < ToPixels(smallest.height);
    if (tooSmall && !settingBack_) PostTo(Window(), 0);
    settingBack_ = tooSmall;
    const ListLayout layout = LayOutList(outer, InfoHeight(), ButtonWidth());
    lblText.Move(layout.label);
    ShownList().Move(layout.list);
    Accepting().Move(layout.button);
}

void ListForm::OnPosted(WPARAM)
{
    const TwipSize outer = OuterSize();
    const TwipSize smallest = MinimumSize();
    SetOuterSize({std::max(outer.width, smallest.width), std::max(outer.height, smallest.height)});
}

TwipSize ListForm::MinimumSize() const
{
    return MinimumListSize(InfoHeight());
}

} // namespace quill
