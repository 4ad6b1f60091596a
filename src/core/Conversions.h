// How arguments and results cross the automation boundary: what a published method receives and
// returns, against the plain types that the method behind it works on.
//
//   published       plain
//   BSTR            std::wstring (NULs inside survive, a null BSTR is the empty string)
//   VARIANT_BOOL    bool (any value but 0 is True; True goes out as -1)
//   SHORT, LONG, BYTE, DATE, CURRENCY    the same
//   VARIANT         const VARIANT&; out: Variant
//   VARIANT*        VARIANT& (a script's own variable)
//   an object       ComPtr<interface>
#pragma once

#include <algorithm>

#include "core/Variant.h"

namespace quill {

// An argument on its way in: converts itself to what the plain method asks for.
template <class T>
struct Argument {
    T value;
    operator T() const { return value; }
};

template <>
struct Argument<VARIANT_BOOL> { // also SHORT, which is the same type to the compiler
    VARIANT_BOOL value;
    operator bool() const { return value != VARIANT_FALSE; }
    operator SHORT() const { return value; }
};

template <>
struct Argument<BSTR> {
    BSTR value;
    operator std::wstring() const { return {value ? value : L"", SysStringLen(value)}; }
};

template <>
struct Argument<VARIANT> {
    const VARIANT& value;
    operator const VARIANT&() const { return value; }
};

template <>
struct Argument<VARIANT*> {
    VARIANT* value;
    operator VARIANT&() const
    {
        if (!value) throw AutomationError{E_POINTER, {}, {}};
        return *value;
    }
    operator Variant() const { return Variant::Dereferenced(operator VARIANT&()); }
};

// A result on its way out. The destination has been initialised before.
template <class T>
void Return(T* out, const T& value)
{
    *out = value;
}

inline void Return(VARIANT_BOOL* out, bool value)
{
    *out = value ? VARIANT_TRUE : VARIANT_FALSE;
}

inline void Return(BSTR* out, const std::wstring& value)
{
    *out = MakeBstr(value).release();
}

inline void Return(VARIANT* out, Variant&& value)
{
    *out = value.Detach();
}

inline void Return(VARIANT* out, const VARIANT& value)
{
    Return(out, Variant::Dereferenced(value));
}

template <class Interface>
void Return(Interface** out, ComPtr<Interface> value)
{
    *out = value.Detach();
}

// Rules for stored properties: what a put does with a value before it is kept.

// Keeps the first `Length` characters.
template <size_t Length>
struct CutTo {
    static std::wstring Apply(const std::wstring&, std::wstring value)
    {
        if (value.size() > Length) value.resize(Length);
        return value;
    }
};

// Ignores a value outside both limits: the old one stays.
template <auto Low, auto High>
struct Within {
    template <class T>
    static T Apply(T old, T value)
    {
        return Low <= value && value <= High ? value : old;
    }
};

// Takes the nearer limit in place of a value outside both.
template <auto Low, auto High>
struct Clamped {
    template <class T>
    static T Apply(T, T value)
    {
        return std::clamp<T>(value, Low, High);
    }
};

// Keeps these bits only.
template <auto Mask>
struct Masked {
    template <class T>
    static T Apply(T, T value)
    {
        return value & static_cast<T>(Mask);
    }
};

// Takes every value as it is.
struct AsGiven {
    template <class T>
    static T Apply(const T&, T value)
    {
        return value;
    }
};

} // namespace quill
