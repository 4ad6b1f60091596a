#include "core/Variant.h"

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

Variant Variant::Dereferenced(const VARIANT& value)
{
    Variant copy;
    Check(VariantCopyInd(&copy, const_cast<VARIANT*>(&value)));
    return copy;
}

} // namespace quill
