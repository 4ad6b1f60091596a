#include "dialogs/frmCheckListBox.h"

namespace quill {

frmCheckListBox::frmCheckListBox(DialogRequest request)
    : ListForm(L"QUILL CheckList", std::move(request))
{
}

LONG frmCheckListBox::CLBox(const std::vector<std::wstring>& lines, LONG checked,
                            const std::wstring& title)
{
    std::vector<std::wstring> shown = lines;
    std::erase_if(shown, [](const std::wstring& line) { return line.empty(); });
    ChkList.Fill(shown);
    shown_ = static_cast<int>(shown.size());
    // Kept as published: bit i checks the shown line i, but only where the given line i is not
    // empty. The two differ behind an empty line, which is not shown.
    for (int line = 0; line < shown_; ++line)
        if ((checked & 1L << line) && !lines[static_cast<size_t>(line)].empty())
            ChkList.SetChecked(line, true);
    Prepare(title, ChkList);
    Ask();
    return result_;
}

bool frmCheckListBox::OnAccept()
{
    for (int line = 0; line < shown_; ++line)
        if (ChkList.Checked(line)) result_ |= 1L << line;
    return true;
}

} // namespace quill
