// Quill.Profile: reads and writes initialisation files through the platform's profile functions.
#pragma once

#include "core/Automation.h"
#include "core/ErrorLevel.h"

namespace quill {

// Failures raise or stay quiet as ErrorLevel says. Lengths are in UTF-16 units.
class Profile final : public WithErrorLevel<Automation<_Profile>> {
public:
    PROPERTY_SET_BY(BSTR, File, file_, Profile::SetFile)
    METHOD(BSTR, GetValue, (BSTR section, BSTR key), section, key)
    METHOD(BSTR, GetSection, (BSTR section, VARIANT_BOOL cvt), section, cvt)
    METHOD(BSTR, GetSectionNames, (VARIANT_BOOL cvt), cvt)
    METHOD(VARIANT_BOOL, SetValue, (BSTR section, BSTR key, BSTR entry), section, key, entry)
    METHOD(VARIANT_BOOL, SetSection, (BSTR section, BSTR entries, VARIANT_BOOL cvt), section,
           entries, cvt)

private:
    void SetFile(const std::wstring& path);
    std::wstring GetValue(const std::wstring& section, const std::wstring& key) const;
    std::wstring GetSection(const std::wstring& section, bool convert) const;
    std::wstring GetSectionNames(bool convert) const;
    bool SetValue(const std::wstring& section, const std::wstring& key, const std::wstring& entry);
    bool SetSection(const std::wstring& section, const std::wstring& entries, bool convert);

    bool RequireFile() const;

    std::wstring file_;
};

} // namespace quill
