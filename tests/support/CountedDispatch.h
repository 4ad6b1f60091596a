// Automation objects of the tests' own, from their members down: references are counted, from any
// thread, and there is no type information.
#pragma once

#include <atomic>

#include "core/Platform.h"

namespace quill::test {

class CountedDispatch : public IDispatch {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        const bool known = id == IID_IUnknown || IsAlso(id);
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() noexcept override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override
    {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override
    {
        return DISP_E_UNKNOWNNAME;
    }

protected:
    virtual ~CountedDispatch() = default;

    // What this is beside IUnknown: automation's interface, or one of events that goes by it.
    virtual bool IsAlso(REFIID id) const noexcept { return id == IID_IDispatch; }

private:
    std::atomic<ULONG> references_{0};
};

} // namespace quill::test
