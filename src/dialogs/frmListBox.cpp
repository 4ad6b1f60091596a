#include "dialogs/frmListBox.h"

#include <algorithm>

#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr std::wstring_view kLineBreak = L"\r\n";

std::vector<std::wstring> NonEmptyLines(const std::wstring& text)
{
    std::vector<std::wstring> lines;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find(kLineBreak, begin), text.size());
        if (end > begin) lines.emplace_back(text, begin, end - begin);
        begin = end + kLineBreak.size();
    }
    return lines;
}

} // namespace

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
    lines_ = NonEmptyLines(items);
    Active().Fill(lines_);
    const bool exists = index >= 0 && static_cast<size_t>(index) < lines_.size();
    Active().Select(exists ? static_cast<int>(index) : -1);
    Apply(settings_, title, lblText, OKButton);
    if (!settings_.info.empty())
        infoHeight_ = std::clamp(lblText.HeightOfText(), kInfoHeight, kMaximumInfoHeight);
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
    const ListLayout layout = LayOutList(outer, infoHeight_);
    lblText.Move(layout.label);
    Active().Move(layout.list);
    OKButton.Move(layout.button);
}

TwipSize frmListBox::MinimumSize() const
{
    return MinimumListSize(infoHeight_);
}

} // namespace quill
