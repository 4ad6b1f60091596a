// Quill.Clipboard: plain text on the system's clipboard.
#pragma once

#include "core/Automation.h"

namespace quill {

// Waits up to half a second while another program holds the clipboard. Raises no errors: a text
// that cannot be read is empty, and one that cannot be written is dropped.
class Clipboard final : public Automation<_Clipboard> {
public:
    COMPUTED_PROPERTY(BSTR, Text)
    PROPERTY_PUT(BSTR, Text, Clipboard::SetText)
    STORED_PROPERTY(VARIANT_BOOL, UseUnicode, unicode_)

private:
    std::wstring Text() const;
    void SetText(const std::wstring& text) const;

    bool unicode_ = false;
};

} // namespace quill
