// Quill.OsVersion: the true version of the running operating system.
#pragma once

#include "core/Automation.h"

namespace quill {

// Read once, when the object is made; all 0 when the platform does not tell. Raises no errors.
class OsVersion final : public Automation<_OsVersion> {
public:
    OsVersion() noexcept;

    STDMETHODIMP get_Number(SHORT* value) noexcept override
    {
        return Call(value, &OsVersion::Number);
    }
    STDMETHODIMP get_Major(LONG* value) noexcept override { return Get(value, major_); }
    STDMETHODIMP get_Minor(LONG* value) noexcept override { return Get(value, minor_); }
    STDMETHODIMP get_Build(LONG* value) noexcept override { return Get(value, build_); }
    STDMETHODIMP get_SPMajor(LONG* value) noexcept override
    {
        return Get(value, servicePackMajor_);
    }
    STDMETHODIMP get_SPMinor(LONG* value) noexcept override
    {
        return Get(value, servicePackMinor_);
    }
    STDMETHODIMP get_Suite(SHORT* value) noexcept override { return Get(value, suite_); }
    STDMETHODIMP get_Product(SHORT* value) noexcept override { return Get(value, product_); }
    STDMETHODIMP get_Product2(LONG* value) noexcept override { return Get(value, edition_); }
    STDMETHODIMP get_Bitness(SHORT* value) noexcept override { return Get(value, bitness_); }

private:
    static SHORT Number();

    LONG major_ = 0;
    LONG minor_ = 0;
    LONG build_ = 0;
    LONG servicePackMajor_ = 0;
    LONG servicePackMinor_ = 0;
    SHORT suite_ = 0;
    SHORT product_ = 0;
    LONG edition_ = 0;
    SHORT bitness_ = 0;
};

} // namespace quill
