#include "support/ScriptObject.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace quill::test {

namespace {

bool IsWhole(VARTYPE type)
{
    constexpr VARTYPE kWhole[] = {VT_I1, VT_I2, VT_I4, VT_INT, VT_UI1, VT_UI2, VT_UI4, VT_UINT};
    return std::ranges::find(kWhole, type) != std::end(kWhole);
}

[[noreturn]] void ThrowWrongKind(const VARIANT& value, const char* wanted)
{
    throw std::logic_error("the result is of type " + std::to_string(V_VT(&value)) + ", not " +
                           wanted);
}

} // namespace

std::string Narrow(std::wstring_view text)
{
    const int units = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, narrow.data(), bytes, nullptr, nullptr);
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
    PrintTo(*this, &message);
    message_ = message.str();
}

void PrintTo(const ScriptError& error, std::ostream* out)
{
    *out << "error 0x" << std::hex << error.number << std::dec << " from \"" << Narrow(error.source)
         << "\": \"" << Narrow(error.description) << '"';
}

std::wstring Value::Text() const
{
    if (V_VT(this) != VT_BSTR) ThrowWrongKind(*this, "text");
    return {V_BSTR(this) ? V_BSTR(this) : L"", SysStringLen(V_BSTR(this))};
}

bool Value::Truth() const
{
    if (V_VT(this) != VT_BOOL) ThrowWrongKind(*this, "a truth value");
    return V_BOOL(this) != VARIANT_FALSE;
}

long Value::Number() const
{
    Variant number;
    if (!IsWhole(V_VT(this)) ||
        FAILED(VariantChangeType(&number, const_cast<Value*>(this), 0, VT_I4)))
        ThrowWrongKind(*this, "a whole number");
    return V_I4(&number);
}

IDispatch* Value::Object() const
{
    if (V_VT(this) != VT_DISPATCH) ThrowWrongKind(*this, "an object");
    return V_DISPATCH(this);
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
    const std::string begin = Narrow(units.substr(0, 200));
    text = type == VT_BSTR ? '"' + begin + '"' : text + ' ' + begin;
    return units.size() > 200 ? text + " (" + std::to_string(units.size()) + " characters)" : text;
}

void PrintTo(const Value& value, std::ostream* out)
{
    *out << Describe(value);
}

Arg::Arg(const VARIANT& other)
{
    Check(VariantCopy(&value, const_cast<VARIANT*>(&other)));
}

bool operator==(const Value& left, const Arg& right)
{
    const VARTYPE kind = V_VT(&right.value);
    if (kind == VT_BSTR)
        return V_VT(&left) == VT_BSTR &&
               left.Text() ==
                   std::wstring_view(V_BSTR(&right.value), SysStringLen(V_BSTR(&right.value)));
    if (V_VT(&left) != kind && !(IsWhole(V_VT(&left)) && IsWhole(kind))) return false;
    return VarCmp(const_cast<Value*>(&left), const_cast<Variant*>(&right.value), LOCALE_INVARIANT,
                  0) == static_cast<HRESULT>(VARCMP_EQ);
}

Value ScriptObject::Run(WORD flags, const wchar_t* name, const std::vector<Arg>& arguments)
{
    DISPID member = DISPID_UNKNOWN;
    auto* spelled = const_cast<wchar_t*>(name);
    const HRESULT found =
        object_->GetIDsOfNames(IID_NULL, &spelled, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(found)) throw ScriptError{static_cast<unsigned>(found), {}, {}};

    std::vector<VARIANT> values; // the platform wants them last to first
    for (size_t index = arguments.size(); index-- > 0;)
        values.push_back(arguments[index].value);
    const bool puts = flags & DISPATCH_PROPERTYPUT;
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{values.data(), puts ? &put : nullptr, static_cast<UINT>(values.size()),
                          puts ? 1U : 0U};

    Value result;
    EXCEPINFO exception{};
    UINT badArgument = 0;
    const HRESULT invoked =
        object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                        puts ? nullptr : &result, &exception, &badArgument);
    if (invoked == DISP_E_EXCEPTION) {
        if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
        SysFreeString(exception.bstrHelpFile);
        const HRESULT number = exception.wCode ? exception.wCode : exception.scode;
        throw ScriptError{static_cast<unsigned>(number), Taken(exception.bstrSource),
                          Taken(exception.bstrDescription)};
    }
    if (FAILED(invoked)) throw ScriptError{static_cast<unsigned>(invoked), {}, {}};
    return result;
}

Variant StartingAt(LONG lower, Variant array)
{
    V_ARRAY(&array)->rgsabound[0].lLbound = lower;
    return array;
}

} // namespace quill::test
