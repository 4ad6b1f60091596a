// An automation object as scripts see it: late-bound, by name, with errors as exceptions.
//
//     ScriptObject profile = ScriptObject::Make(L"Profile");
//     profile.Put(L"File", path);
//     EXPECT_EQ(profile.Call(L"GetValue", L"section", L"key"), L"value");
//     EXPECT_EQ(ErrorOf([&] { profile.Put(L"File", L"?"); }),
//               (ScriptError{0x8004033F, L"Quill.Profile", L"Profile not found: ?"}));
#pragma once

#include <exception>
#include <initializer_list>
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
    bool operator==(const ScriptError& other) const
    {
        return number == other.number && source == other.source && description == other.description;
    }

    unsigned number = 0;
    std::wstring source;
    std::wstring description;

private:
    std::string message_;
};
void PrintTo(const ScriptError& error, std::ostream* out);

// A call's result.
class Value : public Variant {
public:
    Value() = default;
    explicit Value(Variant&& value) noexcept : Variant(std::move(value)) {}

    std::wstring Text() const; // of a BSTR, all of it; anything else is a test failure by throw
    bool Truth() const;        // of a VT_BOOL
    long Number() const;       // of a whole number of any size
    IDispatch* Object() const; // of a VT_DISPATCH
    explicit operator bool() const { return Truth(); }
};
void PrintTo(const Value& value, std::ostream* out);

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

// A value on its way into a call. Text, whole numbers (int: VT_I4, short: VT_I2), truth values,
// doubles, objects and Variants convert by themselves; a pointer to a Variant is passed by
// reference, as a script passes its own variable.
struct Arg {
    Variant value;

    Arg(const wchar_t* text) : value(std::wstring_view(text)) {}
    Arg(std::wstring_view text) : value(text) {}
    Arg(const std::wstring& text) : value(std::wstring_view(text)) {}
    Arg(int number) : value(static_cast<LONG>(number)) {}
    Arg(long number) : value(static_cast<LONG>(number)) {}
    Arg(short number) : value(number) {}
    Arg(double number) : value(number) {}
    Arg(bool truth) : value(truth) {}
    Arg(IDispatch* object) : value(object) {}
    Arg(const VARIANT& other);
    Arg(VARIANT* variable) { value = Reference(VT_VARIANT, variable); }
};

// A script's array: of Variants, from 0 on, or from another lower bound.
template <class... Elements>
Variant ScriptArray(Elements&&... elements)
{
    Array array = MakeArray(VT_VARIANT, sizeof...(elements));
    VARIANT* target = DataOf<VARIANT>(*array).data();
    ((*target++ = Arg(std::forward<Elements>(elements)).value.Detach()), ...);
    return Variant(std::move(array));
}
Variant StartingAt(LONG lower, Variant array);

// Equal in kind and value: text with text, True with True, whole numbers of any size.
bool operator==(const Value& left, const Arg& right);

class ScriptObject {
public:
    explicit ScriptObject(IDispatch* object) : object_(object) {}

    // A new object of a catalogued class, made on the calling thread without the registry.
    static ScriptObject Make(std::wstring_view className);

    template <class... Arguments>
    Value Get(const wchar_t* name, Arguments&&... arguments)
    {
        return Invoke(DISPATCH_PROPERTYGET, name, std::forward<Arguments>(arguments)...);
    }
    template <class... Arguments>
    void Put(const wchar_t* name, Arguments&&... arguments)
    {
        Invoke(DISPATCH_PROPERTYPUT, name, std::forward<Arguments>(arguments)...);
    }
    // As a script's call of a method or of a property with arguments.
    template <class... Arguments>
    Value Call(const wchar_t* name, Arguments&&... arguments)
    {
        return Invoke(DISPATCH_METHOD | DISPATCH_PROPERTYGET, name,
                      std::forward<Arguments>(arguments)...);
    }

    IDispatch* Dispatch() const { return object_.Get(); }
    void Release() { object_.Reset(); }

private:
    template <class... Given>
    Value Invoke(WORD flags, const wchar_t* name, Given&&... given)
    {
        std::vector<Arg> arguments;
        (arguments.emplace_back(std::forward<Given>(given)), ...);
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
