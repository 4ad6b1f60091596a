// What Quill.Window and Quill.Window2 share: a window that a script writes lines to.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "core/Automation.h"
#include "core/Text.h"
#include "gui/windowfn.h"
#include "windows/ShownProperty.h"
#include "windows/frmWindow.h"

namespace quill {

// The window stays until Remove, its close box, or the object's release. Properties take effect at
// once where it is there, else when it is made. Raises no errors of its own.
template <class Interface, class FormType>
class OutputWindow : public Automation<Interface> {
public:
    ~OutputWindow() override { Close(); }

    ACTION(Create, (BSTR t), t)
    STDMETHODIMP Remove() noexcept override
    {
        return this->Run([&] { Close(); });
    }
    STDMETHODIMP Cls() noexcept override
    {
        return this->Run([&] {
            if (FormType* form = Shown()) form->text.Clear();
        });
    }
    ACTION(WriteLine, (BSTR s), s)
    STDMETHODIMP Flash(LONG num) noexcept override
    {
        return this->Run([&] {
            if (FormType* form = Shown()) FlashCaption(form->Window(), num);
        });
    }
    STDMETHODIMP get_handle(LONG* value) noexcept override
    {
        FormType* form = Shown();
        return this->Get(value, form ? static_cast<LONG>(HandleToLong(form->Window())) : 0L);
    }
    SHOWN_PROPERTY(BSTR, Title, title_, form.SetCaption(title_), CutTo<kTitleLimit>)
    SHOWN_PROPERTY(VARIANT_BOOL, Topmost, topmost_, SetTopmost(form.Window(), topmost_))
    SHOWN_PROPERTY(VARIANT_BOOL, WriteBold, bold_, ApplyFont(form))
    SHOWN_PROPERTY(BSTR, WriteFont, fontName_, ApplyFont(form))
    SHOWN_PROPERTY(SHORT, WriteSize, fontSize_, ApplyFont(form), Clamped<6, 36>)

protected:
    explicit OutputWindow(const wchar_t* title) : title_(title) {}

    // The form while its window is there, else null.
    FormType* Shown() const noexcept { return form_ && !form_->Closed() ? form_.get() : nullptr; }

    // Fits the new form to the class's own properties.
    virtual void Prepare(FormType&) {}

private:
    static constexpr size_t kLineLimit = 4096; // UTF-16 units

    void Create(const std::wstring& title)
    {
        if (Shown()) return;
        const auto form = std::make_shared<FormType>();
        form_ = form;
        ApplyFont(*form);
        Prepare(*form);
        if (!title.empty()) title_ = title.substr(0, kTitleLimit);
        form->SetCaption(title_);
        form->ShowModeless(topmost_);
    }

    void Close() noexcept
    {
        if (const auto form = std::exchange(form_, nullptr)) form->Unload();
    }

    void WriteLine(const std::wstring& line)
    {
        FormType* form = Shown();
        if (!form) return;
        std::wstring shown = line.substr(0, kLineLimit);
        std::replace(shown.begin(), shown.end(), L'\0', L' '); // the control would end there
        form->text.Append(shown.append(kLineBreak));
    }

    // A name that no font can have leaves the window with the one it has.
    void ApplyFont(FormType& form) const
    {
        FontSpec font{kDesignFont.name, fontSize_, bold_};
        if (fontName_.size() >= LF_FACESIZE)
            font.name = form.text.CurrentFont().name;
        else if (!fontName_.empty())
            font.name = fontName_;
        if (font != form.text.CurrentFont()) form.text.SetFont(font);
    }

    std::wstring title_;
    bool topmost_ = true;
    bool bold_ = false;
    std::wstring fontName_; // empty: that of the design
    SHORT fontSize_ = 10;   // points
    std::shared_ptr<FormType> form_;
};

} // namespace quill
