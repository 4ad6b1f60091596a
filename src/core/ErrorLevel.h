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
    // Raises an entry of the error table, or returns for the method to go on with its quiet result.
    void RaiseUnlessQuiet(const PublishedError& entry, const std::wstring& value = {}) const
    {
        if (errorLevel_ >= 1) Raise(entry, value);
    }

private:
    SHORT errorLevel_ = 1;
};

} // namespace quill
