// Owners of automation values.
#pragma once

#include <vector>

#include "core/AutomationError.h"

namespace quill {

// A counted string; embedded NULs are kept. Throws std::bad_alloc.
Bstr MakeBstr(std::wstring_view text);

// A VARIANT that releases what it holds.
class Variant : public VARIANT {
public:
    Variant() noexcept { VariantInit(this); }
    Variant(Variant&& other) noexcept : VARIANT(other) { VariantInit(&other); }
    Variant& operator=(Variant&& other) noexcept
    {
        std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
        return *this;
    }
    ~Variant() { VariantClear(this); }

    explicit Variant(std::wstring_view text);
    explicit Variant(LONG number) noexcept;
    explicit Variant(SHORT number) noexcept;
    explicit Variant(double number) noexcept;
    explicit Variant(bool truth) noexcept;
    explicit Variant(IDispatch* object) noexcept; // adds its own reference

    // A copy of the value behind all references.
    static Variant Dereferenced(const VARIANT& value);

    // Gives the value away.
    VARIANT Detach() noexcept
    {
        const VARIANT value = *this;
        VariantInit(this);
        return value;
    }
};

// Conversions as the languages do them; what cannot be converted raises their run-time errors.
std::wstring ToText(const VARIANT& value);
LONG ToLong(const std::wstring& text);

// The array inside a Variant, through all references; null where there is none.
const SAFEARRAY* ArrayOf(const VARIANT& value) noexcept;

// The first elements, at most `limit`, of a one-dimensional array of any type and lower bound.
// Raises "subscript out of range" for more dimensions.
std::vector<Variant> ElementsOf(const SAFEARRAY& array, size_t limit);

} // namespace quill
