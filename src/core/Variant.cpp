#include "core/Variant.h"

#include <algorithm>
#include <new>

namespace quill {

Bstr MakeBstr(std::wstring_view text)
{
    Bstr string(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!string) throw std::bad_alloc();
    return string;
}

Variant::Variant(std::wstring_view text) : Variant()
{
    V_BSTR(this) = MakeBstr(text).release();
    V_VT(this) = VT_BSTR;
}

Variant::Variant(LONG number) noexcept : Variant()
{
    V_VT(this) = VT_I4;
    V_I4(this) = number;
}

Variant::Variant(SHORT number) noexcept : Variant()
{
    V_VT(this) = VT_I2;
    V_I2(this) = number;
}

Variant::Variant(double number) noexcept : Variant()
{
    V_VT(this) = VT_R8;
    V_R8(this) = number;
}

Variant::Variant(bool truth) noexcept : Variant()
{
    V_VT(this) = VT_BOOL;
    V_BOOL(this) = truth ? VARIANT_TRUE : VARIANT_FALSE;
}

Variant::Variant(IDispatch* object) noexcept : Variant()
{
    V_VT(this) = VT_DISPATCH;
    V_DISPATCH(this) = object;
    if (object) object->AddRef();
}

Variant::Variant(Array array) : Variant()
{
    VARTYPE type = VT_EMPTY;
    Check(SafeArrayGetVartype(array.get(), &type));
    V_ARRAY(this) = array.release();
    V_VT(this) = static_cast<VARTYPE>(VT_ARRAY | type);
}

Variant Variant::OfDate(DATE date) noexcept
{
    Variant value(date);
    V_VT(&value) = VT_DATE;
    return value;
}

Variant Variant::Dereferenced(const VARIANT& value)
{
    Variant copy;
    Check(VariantCopyInd(&copy, const_cast<VARIANT*>(&value)));
    return copy;
}

namespace {

void CheckConversion(HRESULT result)
{
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    if (result == DISP_E_OVERFLOW) RaiseRuntimeError(RuntimeError::Overflow);
    if (FAILED(result)) RaiseRuntimeError(RuntimeError::TypeMismatch);
}

// Bytes of a value of this type; 0 for what cannot be assigned by its bytes alone.
size_t SizeOf(VARTYPE type) noexcept
{
    switch (type) {
    case VT_I1:
    case VT_UI1: return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL: return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4: return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE: return 8;
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN: return sizeof(void*);
    default: return 0;
    }
}

// Where an element of this type is to be put inside a Variant.
void* Room(VARIANT& value, VARTYPE type) noexcept
{
    if (type == VT_VARIANT) return &value;
    if (type == VT_DECIMAL) return &V_DECIMAL(&value);
    return &V_UI1(&value);
}

} // namespace

Array MakeArray(VARTYPE type, size_t count)
{
    Array array(SafeArrayCreateVector(type, 0, static_cast<ULONG>(count)));
    if (!array) throw std::bad_alloc();
    return array;
}

Variant MakeStringArray(const std::vector<std::wstring>& strings, bool ofVariants)
{
    Array array = MakeArray(ofVariants ? VT_VARIANT : VT_BSTR, strings.size());
    for (size_t index = 0; index < strings.size(); ++index) {
        if (ofVariants)
            DataOf<VARIANT>(*array)[index] = Variant(strings[index]).Detach();
        else
            DataOf<BSTR>(*array)[index] = MakeBstr(strings[index]).release();
    }
    return Variant(std::move(array));
}

void Assign(VARIANT& variable, Variant value)
{
    if (!V_ISBYREF(&variable)) {
        std::swap(variable, static_cast<VARIANT&>(value));
        return;
    }
    if (!V_BYREF(&variable)) throw AutomationError{E_POINTER, {}, {}};
    const auto type = static_cast<VARTYPE>(V_VT(&variable) & ~VT_BYREF);
    if (type == VT_VARIANT) return Assign(*V_VARIANTREF(&variable), std::move(value));
    const size_t size = SizeOf(type);
    if (size == 0) RaiseRuntimeError(RuntimeError::TypeMismatch);
    CheckConversion(VariantChangeType(&value, &value, 0, type));
    // What the variable held goes away with the value.
    auto* held = static_cast<BYTE*>(V_BYREF(&variable));
    std::swap_ranges(held, held + size, &V_UI1(&value));
}

bool IsNumericType(VARTYPE type) noexcept
{
    switch (type) {
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DECIMAL:
    case VT_BOOL: return true;
    default: return false;
    }
}

std::wstring ToText(const VARIANT& value)
{
    Variant text = Variant::Dereferenced(value);
    if (V_VT(&text) == VT_NULL) RaiseRuntimeError(RuntimeError::InvalidUseOfNull);
    CheckConversion(VariantChangeType(&text, &text, VARIANT_ALPHABOOL, VT_BSTR));
    return {V_BSTR(&text) ? V_BSTR(&text) : L"", SysStringLen(V_BSTR(&text))};
}

LONG ToLong(const std::wstring& text)
{
    LONG number = 0;
    CheckConversion(
        VarI4FromStr(const_cast<wchar_t*>(text.c_str()), LOCALE_USER_DEFAULT, 0, &number));
    return number;
}

const SAFEARRAY* ArrayOf(const VARIANT& value) noexcept
{
    if (V_VT(&value) == (VT_BYREF | VT_VARIANT))
        return V_VARIANTREF(&value) ? ArrayOf(*V_VARIANTREF(&value)) : nullptr;
    if (!V_ISARRAY(&value)) return nullptr;
    if (!V_ISBYREF(&value)) return V_ARRAY(&value);
    return V_ARRAYREF(&value) ? *V_ARRAYREF(&value) : nullptr;
}

std::vector<Variant> ElementsOf(const SAFEARRAY& array, size_t limit)
{
    if (array.cDims != 1) RaiseRuntimeError(RuntimeError::SubscriptOutOfRange);
    auto* elements = const_cast<SAFEARRAY*>(&array); // only read
    VARTYPE type = VT_EMPTY;
    CheckConversion(SafeArrayGetVartype(elements, &type));
    if (type == VT_RECORD) RaiseRuntimeError(RuntimeError::TypeMismatch);

    const SAFEARRAYBOUND& bound = array.rgsabound[0];
    std::vector<Variant> values(std::min<size_t>(bound.cElements, limit));
    for (size_t position = 0; position < values.size(); ++position) {
        Variant& value = values[position];
        auto index = static_cast<LONG>(bound.lLbound + static_cast<LONGLONG>(position));
        CheckConversion(SafeArrayGetElement(elements, &index, Room(value, type)));
        if (type != VT_VARIANT) V_VT(&value) = type;
    }
    return values;
}

} // namespace quill
