// The switch that lets a script silence the errors of an object.
#pragma once

#include "core/Automation.h"
#include "core/Conversions.h"
#include "core/quillfn.h"

namespace quill {

// Adds ErrorLevel to a class: 0 keeps its errors quiet, 1 raises them; other values are ignored.
template <class Base>
class WithErrorLevel : public Base {
public:
    STORED_PROPERTY(SHORT, ErrorLevel, errorLevel_, Within<0, 1>)

protected:
    // Raises one of the class's errors; returns False where the script keeps errors quiet.
    bool Refuse(const PublishedError& entry, const std::wstring& value = {}) const
    {
        if (errorLevel_ >= 1) Raise(entry, value);
        return false;
    }

private:
    SHORT errorLevel_ = 1;
};

} // namespace quill
