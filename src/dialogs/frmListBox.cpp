#include "dialogs/frmListBox.h"

#include "core/Text.h"

namespace quill {

frmListBox::frmListBox(DialogRequest request) : ListForm(L"QUILL List", std::move(request)) {}

std::wstring frmListBox::LBox(const std::wstring& items, bool multi, long index,
                              const std::wstring& title)
{
    multi_ = multi;
    ListBox& list = ShownList();
    for (ListBox* each : {&List1, &List2}) {
        each->Enable(each == &list);
        each->SetVisible(each == &list);
    }
    lines_ = SplitLines(items);
    std::erase_if(lines_, [](const std::wstring& line) { return line.empty(); });
    list.Fill(lines_);
    Prepare(title, list);
    const bool exists = index >= 0 && static_cast<size_t>(index) < lines_.size();
    list.Select(exists ? static_cast<int>(index) : -1);
    Ask();
    return std::move(result_);
}

bool frmListBox::OnAccept()
{
    for (int index : ShownList().Selected()) {
        result_ += lines_[static_cast<size_t>(index)];
        if (multi_) result_ += kLineBreak;
    }
    return true;
}

} // namespace quill
