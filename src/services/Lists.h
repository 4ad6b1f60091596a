// Arrays of scripts: what is in them, whatever their type and bounds, and arrays that every script
// language can index, which are zero-based ones of Variants.
//
// Anything but an array has no elements here; nor has an array of more than one dimension or of
// records. Elements are compared by their text or their number. Objects, arrays, Null and
// errors have neither: nobody's default property is asked.
#pragma once

#include <optional>
#include <vector>

#include "core/Variant.h"

namespace quill {

// The elements of a one-dimensional array, behind all references; nothing for anything else.
std::optional<std::vector<Variant>> ElementsIn(const VARIANT& items);

// The same for the arrays of all languages, those of JScript too: objects with `length` and members
// "0", "1" and so on, of which missing ones are Empty. Each member costs two calls to the client,
// so that no more than 10,000 are read. Nothing for more elements than `limit`, and where the
// object refuses an answer.
std::optional<std::vector<Variant>> ElementsOfAny(const VARIANT& items, size_t limit);

// The text of an element; nothing where it has none.
std::optional<std::wstring> TextIn(const VARIANT& value);

// Converts as the languages do. False, with nothing in `converted`, when it cannot be.
bool Convert(Variant& converted, const VARIANT& value, VARTYPE type) noexcept;

// A zero-based array of Variants, which takes the elements over.
Variant MakeList(std::vector<Variant> elements);

Variant VariantArray(const VARIANT& items);

// Empty when an element cannot be converted. A type that no array can have gives an empty array of
// Variants.
Variant TypedArray(const VARIANT& items, LONG vartype);

// Stable in both directions. Elements without a text (or number) stand at the end as they came.
Variant Sort(const VARIANT& items, bool numeric, bool descending);

// Elements without a text stay.
Variant Unique(const VARIANT& items, bool ignoreCase);

// Positions count from 0, whatever the array's lower bound; -1 for none.
LONG Find(const VARIANT& items, const VARIANT& value, LONG start, bool ignoreCase);

// An element without a text is an empty one.
std::wstring Join(const VARIANT& items, const std::wstring& separator);

// An empty text has no parts; an empty separator separates nothing.
Variant Split(const std::wstring& text, const std::wstring& separator);

} // namespace quill
