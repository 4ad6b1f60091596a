// What Quill.Window and Quill.Window2 share: a window that a script writes lines to.
#pragma once

#include <algorithm>
#include <utility>

#include "core/Automation.h"
#include "core/Text.h"
#include "gui/guifn.h"
#include "gui/windowfn.h"
#include "windows/frmWindow.h"

namespace quill {

// The window stays until Remove, its close box, or the object's release. Properties take effect at
// once where it is there, else when it is made. Raises no errors of its own.
template <class Interface, class FormType>
class OutputWindow : public Automation<Interface> {
public:
    ~OutputWindow() override { Close(); }

    STDMETHODIMP Create(BSTR t) noexcept override { return this->Call(&OutputWindow::Open, t); }
    STDMETHODIMP Remove() noexcept override { return this->Call(&OutputWindow::Close); }
    STDMETHODIMP Cls() noexcept override { return this->Call(&OutputWindow::Clear); }
    STDMETHODIMP WriteLine(BSTR s) noexcept override { return this->Call(&OutputWindow::Write, s); }
    STDMETHODIMP Flash(LONG num) noexcept override
    {
        return this->Call(&OutputWindow::FlashWindow, num);
    }
    STDMETHODIMP get_handle(LONG* value) noexcept override
    {
        FormType* form = Shown();
        return this->Get(value, form ? static_cast<LONG>(HandleToLong(form->Window())) : 0L);
    }
    STDMETHODIMP get_Title(BSTR* value) noexcept override { return this->Get(value, title_); }
    STDMETHODIMP put_Title(BSTR value) noexcept override
    {
        return this->Call(&OutputWindow::SetTitle, value);
    }
    STDMETHODIMP get_Topmost(VARIANT_BOOL* value) noexcept override
    {
        return this->Get(value, topmost_);
    }
    STDMETHODIMP put_Topmost(VARIANT_BOOL value) noexcept override
    {
        return this->Call(&OutputWindow::PutTopmost, value);
    }
    STDMETHODIMP get_WriteBold(VARIANT_BOOL* value) noexcept override
    {
        return this->Get(value, bold_);
    }
    STDMETHODIMP put_WriteBold(VARIANT_BOOL value) noexcept override
    {
        return this->Call(&OutputWindow::SetBold, value);
    }
    STDMETHODIMP get_WriteFont(BSTR* value) noexcept override
    {
        return this->Get(value, fontName_);
    }
    STDMETHODIMP put_WriteFont(BSTR value) noexcept override
    {
        return this->Call(&OutputWindow::SetFontName, value);
    }
    STDMETHODIMP get_WriteSize(SHORT* value) noexcept override
    {
        return this->Get(value, fontSize_);
    }
    STDMETHODIMP put_WriteSize(SHORT value) noexcept override
    {
        return this->Call(&OutputWindow::SetSize, value);
    }

protected:
    explicit OutputWindow(const wchar_t* title) : title_(title) {}

    // The form while its window is there, else null.
    FormType* Shown() const noexcept { return form_ && !form_->Closed() ? form_.get() : nullptr; }

    // Fits the new form to the class's own properties.
    virtual void Prepare(FormType&) {}

private:
    static constexpr size_t kLineLimit = 4096; // UTF-16 units

    void Open(const std::wstring& title)
    {
        if (Shown()) return;
        const auto form = std::make_shared<FormType>();
        form_ = form;
        ApplyFont();
        Prepare(*form);
        SetTitle(title.empty() ? title_ : title);
        form->ShowModeless(topmost_);
    }

    void Close() noexcept
    {
        if (const auto form = std::exchange(form_, nullptr)) form->Unload();
    }

    void Clear()
    {
        if (FormType* form = Shown()) form->text.Clear();
    }

    void Write(const std::wstring& line)
    {
        FormType* form = Shown();
        if (!form) return;
        std::wstring shown = line.substr(0, kLineLimit);
        std::replace(shown.begin(), shown.end(), L'\0', L' '); // the control would end there
        form->text.Append(shown.append(kLineBreak));
    }

    void FlashWindow(LONG count)
    {
        if (FormType* form = Shown()) FlashCaption(form->Window(), count);
    }

    void SetTitle(const std::wstring& title)
    {
        title_ = title.substr(0, kTitleLimit);
        if (FormType* form = Shown()) form->SetCaption(title_);
    }

    void PutTopmost(bool topmost)
    {
        topmost_ = topmost;
        if (FormType* form = Shown()) SetTopmost(form->Window(), topmost);
    }

    void SetBold(bool bold)
    {
        bold_ = bold;
        ApplyFont();
    }

    void SetFontName(const std::wstring& name)
    {
        fontName_ = name;
        ApplyFont();
    }

    void SetSize(SHORT points)
    {
        fontSize_ = Clamped<6, 36>::Apply(fontSize_, points);
        ApplyFont();
    }

    // A name that no font can have leaves the window with the one it has.
    void ApplyFont()
    {
        FormType* form = Shown();
        if (!form) return;
        FontSpec font{kDesignFont.name, fontSize_, bold_};
        if (fontName_.size() >= LF_FACESIZE)
            font.name = form->text.CurrentFont().name;
        else if (!fontName_.empty())
            font.name = fontName_;
        if (font != form->text.CurrentFont()) form->text.SetFont(font);
    }

    std::wstring title_;
    bool topmost_ = true;
    bool bold_ = false;
    std::wstring fontName_; // empty: that of the design
    SHORT fontSize_ = 10;   // points
    std::shared_ptr<FormType> form_;
};

} // namespace quill
