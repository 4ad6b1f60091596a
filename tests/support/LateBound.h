// Calls by name, as scripts make them, with errors as exceptions. Most of what scripts do is a line
// of a table instead.
#pragma once

#include <span>
#include <stdexcept>
#include <string>

#include "core/Text.h"
#include "core/Variant.h"

namespace quill::test {

// What a call raised, as the Err object of a script shows it. Number 0: nothing was raised.
struct ScriptError : std::runtime_error {
    ScriptError(unsigned raised = 0, std::wstring by = {}, std::wstring text = {});

    unsigned number;
    std::wstring source;
    std::wstring description;
};

// A call of a method, or of a property with arguments. Throws ScriptError.
Variant Invoke(IDispatch* object, const wchar_t* name, std::span<const Variant> arguments = {},
               WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET);

// An empty value of a type, as typed languages make it; a variable with a type of its own, or an
// array, as typed languages pass it by reference.
inline Variant OfType(int type)
{
    Variant value;
    V_VT(&value) = static_cast<VARTYPE>(type);
    return value;
}
inline Variant Reference(int type, void* variable)
{
    Variant reference = OfType(VT_BYREF | type);
    V_BYREF(&reference) = variable;
    return reference;
}

// For a failure's message: type, and the beginning of a text.
std::string Describe(const VARIANT& value);

// The text of a string that is freed.
std::wstring Taken(BSTR text);

// UTF-8, for messages.
inline std::string Narrow(std::wstring_view text)
{
    return Encode(text, CP_UTF8);
}

} // namespace quill::test
