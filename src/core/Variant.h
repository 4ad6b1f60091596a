// Owners of automation values.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/AutomationError.h"

namespace quill {

// A counted string; embedded NULs are kept. Throws std::bad_alloc.
Bstr MakeBstr(std::wstring_view text);

using Array = Owned<SAFEARRAY*, SafeArrayDestroy>;

// A VARIANT that releases what it holds. All of its bytes are zero where it holds nothing: values
// are filled in by their bytes, some of them not to the end.
class Variant : public VARIANT {
public:
    Variant() noexcept : VARIANT() {}
    Variant(Variant&& other) noexcept : VARIANT(other.Detach()) {}
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
    explicit Variant(Array array);

    static Variant OfDate(DATE date) noexcept;

    // A copy of the value behind all references.
    static Variant Dereferenced(const VARIANT& value);

    // Gives the value away.
    VARIANT Detach() noexcept { return std::exchange(static_cast<VARIANT&>(*this), VARIANT()); }
};

// A zero-based array of this many elements, all of them 0 or empty. Throws std::bad_alloc.
Array MakeArray(VARTYPE type, size_t count);

// The elements of a one-dimensional array, to be read or filled in place.
template <class Element>
std::span<Element> DataOf(const SAFEARRAY& array) noexcept
{
    return {static_cast<Element*>(array.pvData), array.rgsabound[0].cElements};
}

// A zero-based array of these strings: one of Variants, as scripts take it, or one of strings.
Variant MakeStringArray(const std::vector<std::wstring>& strings, bool ofVariants);

// Assigns to a script's own variable. One with a type of its own keeps it: the value is converted,
// and what cannot be converted raises the language's run-time error.
void Assign(VARIANT& variable, Variant value);

// True for whole numbers, fractions, Currency and Boolean.
bool IsNumericType(VARTYPE type) noexcept;

// Conversions as the languages do them; what cannot be converted raises their run-time errors.
std::wstring ToText(const VARIANT& value);
LONG ToLong(const std::wstring& text);

// The array inside a Variant, through all references; null where there is none.
const SAFEARRAY* ArrayOf(const VARIANT& value) noexcept;

// The first elements, at most `limit`, of a one-dimensional array of any type and lower bound.
// Raises "subscript out of range" for more dimensions.
std::vector<Variant> ElementsOf(const SAFEARRAY& array, size_t limit);

} // namespace quill
