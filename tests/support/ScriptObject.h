// An automation object as scripts see it: late-bound, by name, with errors as exceptions.
//
//     ScriptObject profile = ScriptObject::Make(L"Profile");
//     profile.Put(L"File", path);
//     EXPECT_EQ(profile.Call(L"GetValue", L"section", L"key").Text(), L"value");
//
// Most of what scripts do is a line of a table instead.
#pragma once

#include <exception>
#include <ostream>
#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill::test {

// What a call raised, as the Err object of a script shows it. Number 0: nothing was raised.
struct ScriptError : std::exception {
    ScriptError() = default;
    ScriptError(unsigned raised, std::wstring by, std::wstring text);
    const char* what() const noexcept override { return message_.c_str(); }
    bool operator==(const ScriptError& other) const { return message_ == other.message_; }

    unsigned number = 0;
    std::wstring source;
    std::wstring description;

private:
    std::string message_; // all of it
};
inline void PrintTo(const ScriptError& error, std::ostream* out)
{
    *out << error.what();
}

// For a failure's message: type, and the beginning of a text.
std::string Describe(const VARIANT& value);

// A variable with a type of its own, or an array, as typed languages pass it by reference.
inline Variant Reference(int type, void* variable)
{
    Variant reference;
    V_BYREF(&reference) = variable;
    V_VT(&reference) = static_cast<VARTYPE>(VT_BYREF | type);
    return reference;
}

// A value on its way into a call. A pointer to a Variant is passed by reference, as a script passes
// its own variable.
struct Arg : Variant {
    Arg(const wchar_t* text) : Variant(std::wstring_view(text)) {}
    Arg(const std::wstring& text) : Variant(std::wstring_view(text)) {}
    Arg(long number) : Variant(number) {}
    Arg(int number) : Variant(long{number}) {}
    Arg(const VARIANT& other) { Check(VariantCopy(this, const_cast<VARIANT*>(&other))); }
    Arg(VARIANT* variable) : Variant(Reference(VT_VARIANT, variable)) {}
};

// A call's result; another kind than was asked for is a failure by throw.
struct Value : Variant {
    std::wstring Text() const;
    long Number() const; // also -1 and 0 of a truth value
    IDispatch* Object() const;
    explicit operator bool() const { return Number() != 0; }
    bool operator==(long number) const { return Number() == number; }
};
inline void PrintTo(const Value& value, std::ostream* out)
{
    *out << Describe(value);
}

class ScriptObject {
public:
    explicit ScriptObject(IDispatch* object) : object_(object) {}

    // A new object of a catalogued class, made on the calling thread without the registry.
    static ScriptObject Make(std::wstring_view className);

    Value Get(const wchar_t* name) { return Invoke(DISPATCH_PROPERTYGET, name); }
    template <class Argument>
    void Put(const wchar_t* name, const Argument& value)
    {
        Invoke(DISPATCH_PROPERTYPUT, name, value);
    }
    // As a script's call of a method or of a property with arguments.
    template <class... Arguments>
    Value Call(const wchar_t* name, const Arguments&... arguments)
    {
        return Invoke(DISPATCH_METHOD | DISPATCH_PROPERTYGET, name, arguments...);
    }

    IDispatch* Dispatch() const { return object_.Get(); }
    void Release() { object_.Reset(); }

private:
    template <class... Given>
    Value Invoke(WORD flags, const wchar_t* name, const Given&... given)
    {
        std::vector<Arg> arguments;
        (arguments.emplace_back(given), ...);
        return Run(flags, name, arguments);
    }
    Value Run(WORD flags, const wchar_t* name, const std::vector<Arg>& arguments);

    ComPtr<IDispatch> object_;
};

// The error that `action` raises, or one with number 0.
template <class Action>
ScriptError ErrorOf(Action&& action)
{
    try {
        action();
        return {};
    } catch (const ScriptError& error) {
        return error;
    }
}

// The text of a string that is freed.
std::wstring Taken(BSTR text);

// UTF-8, for messages.
std::string Narrow(std::wstring_view text);

} // namespace quill::test
