// Quill.Profile: reads and writes initialisation files through the platform's profile functions.
#pragma once

#include "core/Automation.h"
#include "core/ErrorLevel.h"

namespace quill {

// Failures raise or stay quiet as ErrorLevel says. Lengths are in UTF-16 units.
class Profile final : public WithErrorLevel<Automation<_Profile>> {
public:
    PROPERTY_SET_BY(BSTR, File, file_, Profile::SetFile)
    STDMETHODIMP GetValue(BSTR section, BSTR key, BSTR* result) noexcept override
    {
        return Call(result, &Profile::ReadValue, section, key);
    }
    STDMETHODIMP GetSection(BSTR section, VARIANT_BOOL cvt, BSTR* result) noexcept override
    {
        return Call(result, &Profile::ReadSection, section, cvt);
    }
    STDMETHODIMP GetSectionNames(VARIANT_BOOL cvt, BSTR* result) noexcept override
    {
        return Call(result, &Profile::ReadSectionNames, cvt);
    }
    STDMETHODIMP SetValue(BSTR section, BSTR key, BSTR entry,
                          VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &Profile::WriteValue, section, key, entry);
    }
    STDMETHODIMP SetSection(BSTR section, BSTR entries, VARIANT_BOOL cvt,
                            VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &Profile::WriteSection, section, entries, cvt);
    }

private:
    void SetFile(const std::wstring& path);
    std::wstring ReadValue(const std::wstring& section, const std::wstring& key) const;
    std::wstring ReadSection(const std::wstring& section, bool convert) const;
    std::wstring ReadSectionNames(bool convert) const;
    bool WriteValue(const std::wstring& section, const std::wstring& key,
                    const std::wstring& entry);
    bool WriteSection(const std::wstring& section, const std::wstring& entries, bool convert);

    bool HasFile() const;

    std::wstring file_;
};

} // namespace quill
