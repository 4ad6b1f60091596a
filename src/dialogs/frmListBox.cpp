#include "dialogs/frmListBox.h"

#include "core/Text.h"

namespace quill {

frmListBox::frmListBox(const DialogSettings& settings) : ListForm(L"QUILL List", settings) {}

std::wstring frmListBox::LBox(const std::wstring& items, bool multi, long index,
                              const std::wstring& title, const std::function<bool()>& abandoned)
{
    multi_ = multi;
    for (ListBox* list : {&List1, &List2}) {
        list->Enable(list == &ShownList());
        list->SetVisible(list == &ShownList());
    }
    lines_ = SplitLines(items);
    std::erase_if(lines_, [](const std::wstring& line) { return line.empty(); });
    ShownList().Fill(lines_);
    Prepare(title);
    const bool exists = index >= 0 && static_cast<size_t>(index) < lines_.size();
    ShownList().Select(exists ? static_cast<int>(index) : -1);
    Ask(abandoned);
    return std::move(result_);
}

ListBox& frmListBox::ShownList()
{
    return multi_ ? List2 : List1;
}

void frmListBox::Accept()
{
    for (int index : ShownList().Selected()) {
        result_ += lines_[static_cast<size_t>(index)];
        if (multi_) result_ += kLineBreak;
    }
    Unload();
}

} // namespace quill
