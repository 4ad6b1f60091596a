// Quill.OsVersion: the true version of the running operating system.
#pragma once

#include "core/Automation.h"

namespace quill {

// Read once, when the object is made; all 0 if unavailable. Raises no errors.
class OsVersion final : public Automation<_OsVersion> {
public:
    OsVersion() noexcept;

    COMPUTED_PROPERTY(SHORT, Number)
    READ_ONLY_PROPERTY(LONG, Major, static_cast<LONG>(version_.dwMajorVersion))
    READ_ONLY_PROPERTY(LONG, Minor, static_cast<LONG>(version_.dwMinorVersion))
    READ_ONLY_PROPERTY(LONG, Build, static_cast<LONG>(version_.dwBuildNumber))
    READ_ONLY_PROPERTY(LONG, SPMajor, LONG{version_.wServicePackMajor})
    READ_ONLY_PROPERTY(LONG, SPMinor, LONG{version_.wServicePackMinor})
    READ_ONLY_PROPERTY(SHORT, Suite, static_cast<SHORT>(version_.wSuiteMask))
    READ_ONLY_PROPERTY(SHORT, Product, SHORT{version_.wProductType})
    READ_ONLY_PROPERTY(LONG, Product2, edition_)
    READ_ONLY_PROPERTY(SHORT, Bitness, bitness_)

private:
    static SHORT Number();

    OSVERSIONINFOEXW version_{};
    LONG edition_ = 0;
    SHORT bitness_ = 0;
};

} // namespace quill
