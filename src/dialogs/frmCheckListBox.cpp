#include "dialogs/frmCheckListBox.h"

namespace quill {

frmCheckListBox::frmCheckListBox(const DialogSettings& settings)
    : ListForm(L"QUILL CheckList", settings)
{
}

LONG frmCheckListBox::CLBox(const std::vector<std::wstring>& lines, LONG checked,
                            const std::wstring& title, const std::function<bool()>& abandoned)
{
    std::vector<std::wstring> shown = lines;
    std::erase_if(shown, [](const std::wstring& line) { return line.empty(); });
    ChkList.Fill(shown);
    shown_ = static_cast<int>(shown.size());
    for (int line = 0; line < shown_; ++line) {
        // Kept as published: states count by position, with the empty lines; entries are checked.
        const bool named = !lines[static_cast<size_t>(line)].empty();
        if (named && (checked & 1L << line)) ChkList.SetChecked(line, true);
    }
    Prepare(title);
    Ask(abandoned);
    return result_;
}

void frmCheckListBox::Accept()
{
    for (int line = 0; line < shown_; ++line)
        if (ChkList.Checked(line)) result_ |= 1L << line;
    Unload();
}

} // namespace quill
