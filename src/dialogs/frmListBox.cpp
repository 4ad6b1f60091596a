#include "dialogs/frmListBox.h"

namespace quill {

frmListBox::frmListBox(DialogRequest request, bool multi)
    : ListForm(L"QUILL List", std::move(request)), multi_(multi)
{
    for (ListBox* each : {&List1, &List2}) {
        each->Enable(each == &ShownList());
        each->SetVisible(each == &ShownList());
    }
}

bool frmListBox::LBox(Choices& choices, const std::wstring& title)
{
    choices_ = &choices;
    std::vector<std::wstring_view> texts;
    for (size_t line = 0; line < choices.Count(); ++line)
        texts.push_back(choices.Text(line));
    ShownList().Fill(texts);
    Prepare(title, ShownList());
    const std::vector<size_t> chosen = choices.Chosen();
    ShownList().Select({chosen.begin(), chosen.end()});
    return Ask();
}

bool frmListBox::OnAccept()
{
    choices_->ChooseNone();
    for (int line : ShownList().Selected())
        choices_->Choose(static_cast<size_t>(line));
    return true;
}

} // namespace quill
