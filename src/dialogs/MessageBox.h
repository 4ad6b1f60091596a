// Quill.MessageBox: the system's message box, with icons of any module, languages and placement.
#pragma once

#include <functional>

#include "dialogs/Answers.h"
#include "gui/IconModule.h"
#include "gui/windowfn.h"

namespace quill {

// Raises no errors of its own.
class MessageBox final : public WithTimeout<Automation<_MessageBox>> {
public:
    STORED_PROPERTY(LONG, Buttons, buttons_, Within<MB_OK, MB_CANCELTRYCONTINUE>)
    STORED_PROPERTY(LONG, DefButton, defButton_, DefaultButtonFlag)
    STORED_PROPERTY(LONG, Icon, icon_)
    STORED_PROPERTY(BSTR, IconResFile, iconResFile_)
    STORED_PROPERTY(BSTR, IconResID, iconResId_)
    STORED_PROPERTY(LONG, Language, language_)
    STORED_PROPERTY(LONG, Options, options_, Masked<kOptions>)
    STORED_PROPERTY(VARIANT_BOOL, Precedence, precedence_)
    STORED_PROPERTY(BSTR, Text, text_)
    STORED_PROPERTY(BSTR, Title, title_, CutTo<kTitleLimit>)
    METHOD(SHORT, Show, (BSTR msg, LONG style, BSTR Title), msg, style, Title)

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

    SHORT Show(const std::wstring& message, LONG style, const std::wstring& title);
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

// A seam: the platform's message box.
struct MessageBoxFunctions {
    std::function<int(const MSGBOXPARAMSW*)> show = MessageBoxIndirectW;
};

} // namespace quill
