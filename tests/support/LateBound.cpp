#include "support/LateBound.h"

#include <sstream>

namespace quill::test {

std::wstring Taken(BSTR text)
{
    const Bstr owned(text);
    return {text ? text : L"", SysStringLen(text)};
}

static std::string Message(unsigned number, std::wstring_view source, std::wstring_view description)
{
    std::ostringstream message;
    message << "error 0x" << std::hex << number << " from \"" << Narrow(source) << "\": \""
            << Narrow(description) << '"';
    return message.str();
}

ScriptError::ScriptError(unsigned raised, std::wstring by, std::wstring text)
    : runtime_error(Message(raised, by, text)), number(raised), source(std::move(by)),
      description(std::move(text))
{
}

std::string Describe(const VARIANT& value)
{
    const VARIANT& held = V_VT(&value) == (VT_BYREF | VT_VARIANT) ? *V_VARIANTREF(&value) : value;
    Variant text; // an object is not asked for its value
    if (V_VT(&held) != VT_DISPATCH && V_VT(&held) != VT_UNKNOWN)
        VariantChangeType(&text, const_cast<VARIANT*>(&held), VARIANT_ALPHABOOL, VT_BSTR);
    const std::wstring_view units(V_BSTR(&text), SysStringLen(V_BSTR(&text)));
    return "type " + std::to_string(V_VT(&held)) + " \"" + Narrow(units.substr(0, 200)) + '"';
}

Variant Invoke(IDispatch* object, const wchar_t* name, std::span<const Variant> arguments,
               WORD flags)
{
    const auto check = [](HRESULT result) {
        if (FAILED(result)) throw ScriptError(static_cast<unsigned>(result));
    };
    DISPID member = DISPID_UNKNOWN;
    auto* spelled = const_cast<wchar_t*>(name);
    check(object->GetIDsOfNames(IID_NULL, &spelled, 1, LOCALE_USER_DEFAULT, &member));
    std::vector<VARIANT> values(arguments.rbegin(), arguments.rend()); // borrowed
    const bool puts = flags & DISPATCH_PROPERTYPUT;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{values.data(), puts ? &put : nullptr, static_cast<UINT>(values.size()),
                          puts ? 1U : 0U};
    Variant result;
    EXCEPINFO raised{};
    const HRESULT invoked = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags,
                                           &parameters, puts ? nullptr : &result, &raised, nullptr);
    if (invoked != DISP_E_EXCEPTION) return check(invoked), std::move(result);
    SysFreeString(raised.bstrHelpFile);
    throw ScriptError(static_cast<unsigned>(raised.scode), Taken(raised.bstrSource),
                      Taken(raised.bstrDescription));
}

} // namespace quill::test
