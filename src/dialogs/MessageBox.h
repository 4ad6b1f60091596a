// Quill.MessageBox: the system's message box, with icons of any module, languages and placement.
#pragma once

#include <functional>

#include "core/Automation.h"
#include "gui/IconModule.h"
#include "gui/windowfn.h"

namespace quill {

// Raises no errors of its own.
class MessageBox final : public Automation<_MessageBox> {
public:
    STDMETHODIMP get_Buttons(LONG* value) noexcept override { return Get(value, buttons_); }
    STDMETHODIMP put_Buttons(LONG value) noexcept override
    {
        return Put<Within<MB_OK, MB_CANCELTRYCONTINUE>>(buttons_, value);
    }
    STDMETHODIMP get_DefButton(LONG* value) noexcept override { return Get(value, defButton_); }
    STDMETHODIMP put_DefButton(LONG value) noexcept override
    {
        return Put<DefaultButtonFlag>(defButton_, value);
    }
    STDMETHODIMP get_Icon(LONG* value) noexcept override { return Get(value, icon_); }
    STDMETHODIMP put_Icon(LONG value) noexcept override { return Put(icon_, value); }
    STDMETHODIMP get_IconResFile(BSTR* value) noexcept override { return Get(value, iconResFile_); }
    STDMETHODIMP put_IconResFile(BSTR value) noexcept override { return Put(iconResFile_, value); }
    STDMETHODIMP get_IconResID(BSTR* value) noexcept override { return Get(value, iconResId_); }
    STDMETHODIMP put_IconResID(BSTR value) noexcept override { return Put(iconResId_, value); }
    STDMETHODIMP get_Language(LONG* value) noexcept override { return Get(value, language_); }
    STDMETHODIMP put_Language(LONG value) noexcept override { return Put(language_, value); }
    STDMETHODIMP get_Options(LONG* value) noexcept override { return Get(value, options_); }
    STDMETHODIMP put_Options(LONG value) noexcept override
    {
        return Put<Masked<kOptions>>(options_, value);
    }
    STDMETHODIMP get_Precedence(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, precedence_);
    }
    STDMETHODIMP put_Precedence(VARIANT_BOOL value) noexcept override
    {
        return Put(precedence_, value);
    }
    STDMETHODIMP get_Text(BSTR* value) noexcept override { return Get(value, text_); }
    STDMETHODIMP put_Text(BSTR value) noexcept override { return Put(text_, value); }
    STDMETHODIMP get_Title(BSTR* value) noexcept override { return Get(value, title_); }
    STDMETHODIMP put_Title(BSTR value) noexcept override
    {
        return Put<CutTo<kTitleLimit>>(title_, value);
    }
    STDMETHODIMP Show(BSTR msg, LONG style, BSTR Title, SHORT* result) noexcept override
    {
        return Call(result, &MessageBox::ShowBox, msg, style, Title);
    }

private:
    // Modality and placement; the help button, which nobody would answer, is not among them.
    static constexpr LONG kOptions = MB_SYSTEMMODAL | MB_TASKMODAL | MB_NOFOCUS | MB_SETFOREGROUND |
                                     MB_DEFAULT_DESKTOP_ONLY | MB_TOPMOST | MB_RIGHT |
                                     MB_RTLREADING | MB_SERVICE_NOTIFICATION;

    // 2, 3 and 4 name a button; so do the flags that they are stored as. All else is the first.
    struct DefaultButtonFlag {
        static LONG Apply(LONG, LONG value)
        {
            if (value >= 2 && value <= 4) return (value - 1) * MB_DEFBUTTON2;
            const bool flag =
                value == MB_DEFBUTTON2 || value == MB_DEFBUTTON3 || value == MB_DEFBUTTON4;
            return flag ? value : 0;
        }
    };

    // What the box shows: from the properties, or nothing but an explicit style.
    struct Appearance {
        DWORD style = 0;
        IconModule module; // loaded until the box is closed
        IconName icon;
    };

    SHORT ShowBox(const std::wstring& message, LONG style, const std::wstring& title);
    Appearance FromProperties() const;
    bool FindIcon(Appearance& appearance) const;

    LONG buttons_ = 0;
    LONG defButton_ = 0;
    LONG icon_ = 0;
    std::wstring iconResFile_;
    std::wstring iconResId_;
    LONG language_ = 0;
    LONG options_ = 0;
    bool precedence_ = false;
    std::wstring text_;
    std::wstring title_;
};

// The platform's message box; tests put their own in its place.
std::function<int(const MSGBOXPARAMSW*)>& MessageBoxOfThread() noexcept;

} // namespace quill
