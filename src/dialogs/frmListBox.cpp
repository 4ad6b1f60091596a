#include "dialogs/frmListBox.h"

#include <algorithm>

#include "core/Text.h"
#include "gui/windowfn.h"

namespace quill {

frmListBox::frmListBox(const DialogSettings& settings)
    : DialogForm(L"QUILL List", MinimumListSize(kInfoHeight), kSizableStyle), settings_(settings)
{
}

std::wstring frmListBox::LBox(const std::wstring& items, bool multi, long index,
                              const std::wstring& title, const std::function<bool()>& abandoned)
{
    multi_ = multi;
    for (ListBox* list : {&List1, &List2}) {
        list->Enable(list == &Active());
        list->SetVisible(list == &Active());
    }
    lines_ = SplitLines(items);
    std::erase_if(lines_, [](const std::wstring& line) { return line.empty(); });
    Active().Fill(lines_);
    const bool exists = index >= 0 && static_cast<size_t>(index) < lines_.size();
    Active().Select(exists ? static_cast<int>(index) : -1);
    Apply(settings_, title, lblText, OKButton);
    if (!settings_.info.empty())
        infoHeight_ = std::clamp(lblText.HeightOfText(), kInfoHeight, kMaximumInfoHeight);
    buttonWidth_ = std::clamp(OKButton.WidthOfText(), kButtonWidth, MinimumSize().width - 900);
    Active().SetAccessibleName(settings_.info.empty() ? TextOf(Window()) : settings_.info);
    PlaceAtCentre(MinimumSize());
    Show(settings_.topmost);
    WaitUntilClosed(abandoned);
    return std::move(result_);
}

ListBox& frmListBox::Active()
{
    return multi_ ? List2 : List1;
}

void frmListBox::Accept()
{
    for (int index : Active().Selected()) {
        result_ += lines_[static_cast<size_t>(index)];
        if (multi_) result_ += kLineBreak;
    }
    Unload();
}

void frmListBox::OnActivate()
{
    Active().Focus();
}

void frmListBox::OnResize(TwipSize outer)
{
    const ListLayout layout = LayOutList(outer, infoHeight_, buttonWidth_);
    lblText.Move(layout.label);
    Active().Move(layout.list);
    OKButton.Move(layout.button);
}

TwipSize frmListBox::MinimumSize() const
{
    return MinimumListSize(infoHeight_);
}

} // namespace quill
