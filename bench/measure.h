// What the programs that measure share: the clock, late-bound objects, and the comparison in turns.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <wrl/client.h>

namespace bench {

using Microsoft::WRL::ComPtr;

constexpr double kRatioAim = 1.15; // of a server to the bare one

inline double Milliseconds()
{
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

inline double Timed(const std::function<void()>& body)
{
    const double begin = Milliseconds();
    body();
    return Milliseconds() - begin;
}

inline double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

inline void Require(bool done, const char* what)
{
    if (!done) throw std::runtime_error(what);
}

// An argument or a result of a late-bound call.
class Value : public VARIANT {
public:
    Value() { VariantInit(this); }
    explicit Value(const std::wstring& text) : Value()
    {
        V_BSTR(this) = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        V_VT(this) = VT_BSTR;
    }
    explicit Value(LONG number) : Value()
    {
        V_I4(this) = number;
        V_VT(this) = VT_I4;
    }
    explicit Value(VARIANT* variable) : Value() // by reference, as a script passes its variables
    {
        V_VARIANTREF(this) = variable;
        V_VT(this) = VT_BYREF | VT_VARIANT;
    }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    ~Value() { VariantClear(this); }
};

// An object, called as scripts call it.
class Object {
public:
    explicit Object(const CLSID& id)
    {
        const HRESULT created =
            CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, &dispatch_);
        Require(SUCCEEDED(created), "an object could not be made");
    }
    explicit Object(const wchar_t* progId) : Object(ClassOf(progId)) {}
    explicit Object(const Value& made)
        : dispatch_(V_VT(&made) == VT_DISPATCH ? V_DISPATCH(&made) : nullptr)
    {
        Require(dispatch_ != nullptr, "a call returned no object");
    }

    static CLSID ClassOf(const wchar_t* progId)
    {
        CLSID id;
        Require(SUCCEEDED(CLSIDFromProgID(progId, &id)), "a class is not registered");
        return id;
    }

    DISPID Find(const wchar_t* name) const
    {
        DISPID id = 0;
        auto* spelled = const_cast<wchar_t*>(name);
        Require(SUCCEEDED(dispatch_->GetIDsOfNames(IID_NULL, &spelled, 1, 0, &id)),
                "a member was not found");
        return id;
    }
    void Get(DISPID id) const
    {
        DISPPARAMS none{};
        Value result;
        Invoke(id, DISPATCH_PROPERTYGET, none, &result);
    }
    void Put(DISPID id, const Value& value) const
    {
        DISPID name = DISPID_PROPERTYPUT;
        DISPPARAMS parameters{const_cast<Value*>(&value), &name, 1, 1};
        Invoke(id, DISPATCH_PROPERTYPUT, parameters, nullptr);
    }
    // The arguments stand as the platform takes them: the last one first.
    void Call(DISPID id, std::span<Value> arguments, Value& result) const
    {
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        Invoke(id, DISPATCH_METHOD, parameters, &result);
    }

private:
    void Invoke(DISPID id, WORD flags, DISPPARAMS& parameters, VARIANT* result) const
    {
        Require(SUCCEEDED(dispatch_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                            result, nullptr, nullptr)),
                "a call failed");
    }

    ComPtr<IDispatch> dispatch_;
};

// Wine's server can wait for itself for ever when the last reference to an interface goes just
// after a call to it; a class object that is held keeps a server from that.
inline ComPtr<IClassFactory> Hold(const CLSID& id)
{
    ComPtr<IClassFactory> held;
    Require(SUCCEEDED(CoGetClassObject(id, CLSCTX_LOCAL_SERVER, nullptr, IID_PPV_ARGS(&held))),
            "a class object could not be had");
    return held;
}

inline void PrintRatio(const char* what, double ours, double other, const char* unit,
                       double aim = kRatioAim)
{
    const double ratio = ours / other;
    std::printf("%-46s %9.3f %9.3f %-3s %6.2f   %s\n", what, ours, other, unit, ratio,
                ratio <= aim ? "met" : "MISSED");
    std::fflush(stdout);
}

// Both bodies in turn, changing who goes first; the medians of what they return.
inline void Compare(const char* what, int rounds, const std::function<double()>& ours,
                    const std::function<double()>& other, double aim = kRatioAim)
{
    std::vector<double> ourTimes;
    std::vector<double> otherTimes;
    for (int round = 0; round < rounds; ++round) {
        if (round % 2) otherTimes.push_back(other());
        ourTimes.push_back(ours());
        if (round % 2 == 0) otherTimes.push_back(other());
    }
    PrintRatio(what, Median(ourTimes), Median(otherTimes), "ms", aim);
}

// Milliseconds for one of `count` repetitions.
inline std::function<double()> Each(int count, const std::function<void()>& body)
{
    return [=] {
        return Timed([&] {
                   for (int index = 0; index < count; ++index)
                       body();
               }) /
               count;
    };
}

} // namespace bench
