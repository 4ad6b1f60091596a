// Quill.OsVersion: the true version of the running operating system.
#pragma once

#include "core/Automation.h"

namespace quill {

// Read once, when the object is made; all 0 when the platform does not tell. Raises no errors.
class OsVersion final : public Automation<_OsVersion> {
public:
    OsVersion() noexcept;

    COMPUTED_PROPERTY(SHORT, Number)
    READ_ONLY_PROPERTY(LONG, Major, major_)
    READ_ONLY_PROPERTY(LONG, Minor, minor_)
    READ_ONLY_PROPERTY(LONG, Build, build_)
    READ_ONLY_PROPERTY(LONG, SPMajor, servicePackMajor_)
    READ_ONLY_PROPERTY(LONG, SPMinor, servicePackMinor_)
    READ_ONLY_PROPERTY(SHORT, Suite, suite_)
    READ_ONLY_PROPERTY(SHORT, Product, product_)
    READ_ONLY_PROPERTY(LONG, Product2, edition_)
    READ_ONLY_PROPERTY(SHORT, Bitness, bitness_)

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
