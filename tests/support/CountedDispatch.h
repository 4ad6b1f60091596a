// Objects of the tests' own, from their members down: references are counted, from any thread, and
// automation objects have no type information.
#pragma once

#include <atomic>

#include "core/Platform.h"

namespace quill::test {

template <class Interface>
class Counted : public Interface {
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

protected:
    virtual ~Counted() = default;

    // What this is beside IUnknown.
    virtual bool IsAlso(REFIID) const noexcept { return false; }

private:
    std::atomic<ULONG> references_{0};
};

class CountedDispatch : public Counted<IDispatch> {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override { return *count = 0, S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override
    {
        return DISP_E_UNKNOWNNAME;
    }

protected:
    // One of events goes by automation's interface.
    bool IsAlso(REFIID id) const noexcept override { return id == IID_IDispatch; }
};

} // namespace quill::test
