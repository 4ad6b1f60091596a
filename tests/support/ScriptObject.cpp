#include "support/ScriptObject.h"

#include <sstream>
#include <stdexcept>

namespace quill::test {

std::string Narrow(std::wstring_view text)
{
    const int units = static_cast<int>(text.size());
    std::string narrow(3 * text.size(), '\0');
    narrow.resize(static_cast<size_t>(WideCharToMultiByte(
        CP_UTF8, 0, text.data(), units, narrow.data(), 3 * units, nullptr, nullptr)));
    return narrow;
}

std::wstring Taken(BSTR text)
{
    const Bstr owned(text);
    return {text ? text : L"", SysStringLen(text)};
}

ScriptError::ScriptError(unsigned raised, std::wstring by, std::wstring text)
    : number(raised), source(std::move(by)), description(std::move(text))
{
    std::ostringstream message;
    message << "error 0x" << std::hex << number << " from \"" << Narrow(source) << "\": \""
            << Narrow(description) << '"';
    message_ = message.str();
}

// Behind the value, when it is of this type.
static const VARIANT& As(VARTYPE type, const VARIANT& value)
{
    if (V_VT(&value) != type) throw std::logic_error("the result is " + Describe(value));
    return value;
}

std::wstring Value::Text() const
{
    const BSTR text = V_BSTR(&As(VT_BSTR, *this));
    return {text ? text : L"", SysStringLen(text)};
}

long Value::Number() const
{
    Variant number;
    Check(VariantChangeType(&number, const_cast<Value*>(this), 0, VT_I4));
    return V_I4(&number);
}

IDispatch* Value::Object() const
{
    return V_DISPATCH(&As(VT_DISPATCH, *this));
}

std::string Describe(const VARIANT& value)
{
    const VARTYPE type = V_VT(&value);
    if (type == (VT_BYREF | VT_VARIANT)) return '&' + Describe(*V_VARIANTREF(&value));
    std::string text = "type " + std::to_string(type);
    Variant shown;
    if (const SAFEARRAY* array = ArrayOf(value))
        return text + " [" + std::to_string(array->rgsabound[0].cElements) + ']';
    if (type == VT_DISPATCH || type == VT_UNKNOWN ||
        FAILED(VariantChangeType(&shown, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR)))
        return text;
    const std::wstring_view units(V_BSTR(&shown), SysStringLen(V_BSTR(&shown)));
    return text + " \"" + Narrow(units.substr(0, 200)) + "\" of " + std::to_string(units.size());
}

Value ScriptObject::Run(WORD flags, const wchar_t* name, const std::vector<Arg>& arguments)
{
    const auto check = [](HRESULT result) {
        if (FAILED(result)) throw ScriptError(static_cast<unsigned>(result), {}, {});
    };
    DISPID member = DISPID_UNKNOWN;
    auto* spelled = const_cast<wchar_t*>(name);
    check(object_->GetIDsOfNames(IID_NULL, &spelled, 1, LOCALE_USER_DEFAULT, &member));
    std::vector<VARIANT> values(arguments.rbegin(), arguments.rend()); // borrowed
    const bool puts = flags & DISPATCH_PROPERTYPUT;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{values.data(), puts ? &put : nullptr, static_cast<UINT>(values.size()),
                          puts ? 1U : 0U};
    Value result;
    EXCEPINFO raised{};
    const HRESULT invoked =
        object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                        puts ? nullptr : &result, &raised, nullptr);
    if (invoked != DISP_E_EXCEPTION) return check(invoked), std::move(result);
    if (raised.pfnDeferredFillIn) raised.pfnDeferredFillIn(&raised);
    SysFreeString(raised.bstrHelpFile);
    throw ScriptError(static_cast<unsigned>(raised.wCode ? raised.wCode : raised.scode),
                      Taken(raised.bstrSource), Taken(raised.bstrDescription));
}

} // namespace quill::test
