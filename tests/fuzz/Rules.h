// What the reference pages say of properties and results: what a put makes of a value, and between
// which numbers a result lies.
#pragma once

#include <optional>
#include <string_view>

#include "core/Variant.h"

namespace quill::fuzz {

struct Rule {
    enum Kind {
        Within,    // a value outside leaves the old one
        Cut,       // of a text, the first `high` characters
        FilledCut, // the same; an empty text leaves the old one
        Masked,    // the bits of `high` only
        Between,   // whatever was put, what is read lies here
    };
    std::wstring_view className; // empty: any class
    std::wstring_view member;
    Kind kind;
    LONG low;
    LONG high;
};

// Null where nothing is promised.
const Rule* FindRule(std::wstring_view className, std::wstring_view member);

// Whether `after` is what the rule makes of `before` when `put`, a value of the property's type, is
// put.
bool Obeyed(const Rule& rule, const VARIANT& before, const VARIANT& put, const VARIANT& after);

// Whether a number, or a text's length, lies within the rule.
bool Possible(const Rule& rule, const VARIANT& value);

// Equal in type and value, bit by bit.
bool Same(const VARIANT& left, const VARIANT& right);

} // namespace quill::fuzz
