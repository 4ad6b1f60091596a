// A native list view that shows the lines of Choices without keeping them: as a plain list, in
// columns, or with a check box each. It takes the same time for three lines and for a million.
#pragma once

#include <functional>

#include "dialogs/Choices.h"
#include "gui/Controls.h"

namespace quill {

class ChoiceView : public Control {
public:
    // Single: one line can be chosen. Multiple: several, by Shift and Ctrl. Checks: those whose
    // box is checked; a click anywhere on a line, or the space bar, turns its box over.
    enum class Kind { Single, Multiple, Checks };

    // What the form does for the view. `onType`, where there is one, gets what is typed; without
    // it typing finds a line.
    struct Handlers {
        std::function<void()> onDoubleClick;
        std::function<void(wchar_t)> onType;
    };

    ChoiceView(Form& form, const TwipRect& place, Kind kind, Handlers handlers);

    // Shows these lines, which outlive the view, in one column without a heading or in several.
    void Fill(Choices& choices, const std::vector<std::wstring>& headings);

    // Takes over into Choices what the user has selected. Before what changes the rows.
    void Collect();
    // Shows the rows as they are now, from the chosen one on or where the keyboard was.
    void ShowRows();

    // Gives the keyboard to the list: the chosen line, or the first, which is selected then.
    void Enter();

    // The size in twips that shows all columns and rows.
    TwipSize WantedSize() const;

    // Selects or checks all lines on show; where all of them are, none.
    void ToggleAll();
    // The context menu, at a point of the screen; {-1, -1} is for the keyboard.
    void ShowMenu(POINT at);

    void Move(const TwipRect& place) override;
    void SetFont(const FontSpec& font) override;

private:
    LRESULT OnNotify(NMHDR& notification) override;
    bool OnCharacter(wchar_t unit) override;

    int NextRow(int after, UINT flags) const noexcept;
    bool AnySelected() const noexcept { return Send(LVM_GETSELECTEDCOUNT) > 0; }
    void SetState(int row, UINT state, UINT mask) noexcept;
    void ChooseAll(bool chosen);
    void Toggle(int row);
    void SortBy(size_t column);
    void Describe(LVITEMW& item) const noexcept;
    void FitColumns() noexcept;
    // Kept as published: lines with check boxes show control characters as the font has them.
    bool ShowsBlanks() const noexcept { return kind_ != Kind::Checks; }
    bool HasHeadings() const noexcept { return !headings_.empty(); }

    const Kind kind_;
    const Handlers handlers_;
    Choices* choices_ = nullptr;
    std::vector<std::wstring> headings_;
    std::vector<std::vector<std::wstring>> longest_; // cells of each column, one at least
};

} // namespace quill
