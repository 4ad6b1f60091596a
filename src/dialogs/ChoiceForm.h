// A form with a ChoiceView and, where the object asks for it, a box above it that filters the
// lines.
#pragma once

#include <memory>

#include "dialogs/ChoiceView.h"
#include "dialogs/ListForm.h"

namespace quill {

class ChoiceForm : public ListForm {
protected:
    ChoiceForm(const wchar_t* caption, DialogRequest request, ChoiceView::Kind kind, bool filter);

    // Shows the lines and waits for the user. True when `choices` has the answer.
    bool Choose(Choices& choices, const std::vector<std::wstring>& headings,
                const std::wstring& title);

    bool OnAccept() override;

private:
    // The text box in which the user says which lines to show.
    class FilterBox final : public TextBox {
    public:
        FilterBox(Form& form, std::function<void()> onChange);
        void Type(wchar_t unit);

    private:
        void OnCommand(WORD code) override;
        std::function<void()> onChange_;
    };

    void OnFilter();
    bool ReturnsToList() const override { return filter_ == nullptr; }
    bool OnPreview(const MSG& message) override;
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    float HeightAboveList() const override;
    void PlaceList(const TwipRect& room) override;
    TwipSize OpeningSize() const override;

    const ChoiceView::Kind kind_;
    std::unique_ptr<FilterBox> filter_; // null without a filter; before the list for the tab key
    ChoiceView view_;
    Choices* choices_ = nullptr;
    bool widens_ = false; // opens as large as the lines need
};

} // namespace quill
