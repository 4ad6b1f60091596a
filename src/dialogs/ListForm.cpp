#include "dialogs/ListForm.h"

#include <algorithm>

#include "gui/windowfn.h"

namespace quill {

ListForm::ListForm(const wchar_t* caption, DialogRequest request)
    : DialogForm({caption, kDesign.outer, kSizableStyle, kDesign.label.width}, std::move(request))
{
}

void ListForm::Prepare(const std::wstring& title, Control& list)
{
    list_ = &list;
    DialogForm::Prepare(title);
    const std::wstring& info = Settings().info;
    list.SetAccessibleName(info.empty() ? WindowText(Window()) : info);
    PlaceAtCentre(OpeningSize());
}

void ListForm::OnActivate()
{
    if (ReturnsToList())
        list_->Focus();
    else
        DialogForm::OnActivate();
}

void ListForm::OnResize(TwipSize outer)
{
    // Window managers ignore the tracking limits. The size is set back later, since they ignore
    // requests during their own change, and only once: one that insists has its way.
    const TwipSize smallest = MinimumSize();
    const bool tooSmall = ToPixels(outer.width) < ToPixels(smallest.width) ||
                          ToPixels(outer.height) < ToPixels(smallest.height);
    if (tooSmall && !settingBack_) PostTo(Window(), 0);
    settingBack_ = tooSmall;
    const ListLayout layout = LayOut(outer);
    lblText.Move(layout.label);
    PlaceList(layout.list);
    PlaceButtons(layout.button);
}

void ListForm::OnPosted(WPARAM)
{
    const TwipSize outer = OuterSize();
    const TwipSize smallest = MinimumSize();
    SetOuterSize({std::max(outer.width, smallest.width), std::max(outer.height, smallest.height)});
}

ListLayout ListForm::LayOut(TwipSize outer) const
{
    return LayOutList(outer, InfoHeight(), ButtonWidth(), WidthSurplus(kListButtonRoom));
}

TwipSize ListForm::AroundList() const
{
    const ListLayout least = LayOut({0, 0});
    return {least.outer.width - least.list.width,
            least.outer.height - least.list.height + HeightAboveList()};
}

TwipSize ListForm::MinimumSize() const
{
    const TwipSize designed = MinimumListSize(InfoHeight(), WidthSurplus(kListButtonRoom));
    return {designed.width, designed.height + HeightAboveList()};
}

} // namespace quill
