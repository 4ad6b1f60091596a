// Quill.Clipboard: plain text on the system's clipboard.
#pragma once

#include "core/Automation.h"

namespace quill {

// Waits half a second for a program that holds the clipboard. Raises no errors: what cannot be read
// is an empty string, and what cannot be written is dropped.
class Clipboard final : public Automation<_Clipboard> {
public:
    COMPUTED_PROPERTY(BSTR, Text)
    STDMETHODIMP put_Text(BSTR value) noexcept override
    {
        return Call(&Clipboard::WriteText, value);
    }
    STORED_PROPERTY(VARIANT_BOOL, UseUnicode, unicode_)

private:
    std::wstring Text() const;
    void WriteText(const std::wstring& text) const;

    bool unicode_ = false;
};

} // namespace quill
