// Events on the thread that raises them: handlers that act on the object from inside its event.
#pragma once

#include <functional>

#include "core/MessagePump.h"
#include "core/Variant.h"

namespace quill::test {

// Pumps until the condition holds; false after the time is over.
inline bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds = 5000)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() >= end) return false;
        WaitForMessages(20);
    }
    return true;
}

// A sink; belongs to the test, which ends the connection first or releases the object.
class Reaction : public IDispatch {
public:
    explicit Reaction(std::function<void()> act) : act_(std::move(act)) {}
    STDMETHODIMP QueryInterface(REFIID, void** object) override
    {
        *object = this;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override
    {
        ++calls;
        act_();
        return result;
    }

    int calls = 0;
    HRESULT result = S_OK;

private:
    std::function<void()> act_;
};

// Stands for an object of the platform that only its maker knows.
template <class Interface>
class StandIn : public Interface {
public:
    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

protected:
    virtual ~StandIn() = default;

private:
    ULONG references_ = 0;
};

inline ComPtr<IConnectionPoint> PointOf(IDispatch* object)
{
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IConnectionPoint> point;
    Check(object->QueryInterface(IID_PPV_ARGS(&container)));
    Check(container->EnumConnectionPoints(&points));
    Check(points->Next(1, &point, nullptr));
    return point;
}

} // namespace quill::test
