#include "dialogs/ListForm.h"

#include "gui/windowfn.h"

namespace quill {

ListForm::ListForm(const wchar_t* caption, const DialogSettings& settings)
    : DialogForm(caption, MinimumListSize(kInfoHeight), kSizableStyle), settings_(settings)
{
}

void ListForm::Ask(const std::wstring& title, const std::function<bool()>& abandoned)
{
    Apply(settings_, title, lblText, Accepting());
    ShownList().SetAccessibleName(settings_.info.empty() ? TextOf(Window()) : settings_.info);
    PlaceAtCentre(MinimumSize());
    Show(settings_.topmost);
    WaitUntilClosed(abandoned);
}

void ListForm::OnActivate()
{
    ShownList().Focus();
}

void ListForm::OnResize(TwipSize outer)
{
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
