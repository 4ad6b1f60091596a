// A 64-bit program that uses the registered server as a C++ programmer would: early-bound, by the
// interfaces of the type library, and with a sink for an event. Prints what went wrong; 0 when
// nothing did. Built without the project's own libraries, which are 32-bit.
#include <windows.h>

#include <ocidl.h>

#include <cstdio>
#include <initializer_list>

#undef MessageBox // a class here
#include "quill.h"

static_assert(sizeof(void*) == 8);

namespace {

int failures = 0;

bool Expect(bool condition, const char* what, HRESULT result = S_OK)
{
    if (condition) return true;
    std::printf("failed: %s (0x%08lx)\n", what, static_cast<unsigned long>(result));
    ++failures;
    return false;
}

template <class Interface>
Interface* Make(const CLSID& id, const char* name)
{
    Interface* object = nullptr;
    const HRESULT result =
        CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(Interface),
                         reinterpret_cast<void**>(&object)); // by the interface's own identifier
    Expect(SUCCEEDED(result), name, result);
    return object;
}

// Counts events; lives longer than its connection.
class Sink final : public IDispatch {
public:
    int buzzes = 0;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        *object = id == IID_IUnknown || id == IID_IDispatch || id == DIID___Clock ? this : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override
    {
        if (id == 1) ++buzzes;
        return S_OK;
    }
};

void TestEvent()
{
    auto* clock = Make<_Clock>(CLSID_Clock, "a clock");
    if (!clock) return;
    Sink sink;
    IConnectionPointContainer* container = nullptr;
    IConnectionPoint* point = nullptr;
    DWORD cookie = 0;
    HRESULT result = clock->QueryInterface(IID_PPV_ARGS(&container));
    if (SUCCEEDED(result)) result = container->FindConnectionPoint(DIID___Clock, &point);
    if (SUCCEEDED(result)) result = point->Advise(&sink, &cookie);
    if (Expect(SUCCEEDED(result), "a connection to the clock's events", result)) {
        VARIANT_BOOL answer = VARIANT_FALSE;
        Expect(SUCCEEDED(clock->SetTimer(50, &answer)) && answer == VARIANT_TRUE, "SetTimer");
        const ULONGLONG deadline = GetTickCount64() + 20'000;
        while (sink.buzzes == 0 && GetTickCount64() < deadline) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
        }
        Expect(sink.buzzes == 1, "one Buzz");
        Expect(SUCCEEDED(clock->get_Running(&answer)) && answer == VARIANT_FALSE, "Running");
        point->Unadvise(cookie);
    }
    if (point) point->Release();
    if (container) container->Release();
    clock->Release();
}

// Text, arrays of Variants and dates, both ways.
void TestValues()
{
    if (auto* aux = Make<_Aux>(CLSID_Aux, "an Aux")) {
        VARIANT parts;
        VariantInit(&parts);
        BSTR text = SysAllocString(L"one,two,three");
        BSTR comma = SysAllocString(L",");
        BSTR dash = SysAllocString(L"-");
        BSTR joined = nullptr;
        HRESULT result = aux->Split(text, comma, &parts);
        Expect(SUCCEEDED(result) && V_ISARRAY(&parts), "Split", result);
        result = aux->Join(&parts, dash, &joined);
        Expect(SUCCEEDED(result) && joined && wcscmp(joined, L"one-two-three") == 0, "Join",
               result);
        for (BSTR string : {text, comma, dash, joined})
            SysFreeString(string);
        VariantClear(&parts);
        aux->Release();
    }
    if (auto* time = Make<_DateTime>(CLSID_DateTime, "a DateTime")) {
        constexpr DATE kNoon = 36526.5; // 1 January 2000
        DATE there = 0;
        DATE back = 0;
        const HRESULT result = time->ConvertTime(kNoon, VARIANT_TRUE, &there);
        Expect(SUCCEEDED(result) && SUCCEEDED(time->ConvertTime(there, VARIANT_FALSE, &back)) &&
                   back > kNoon - 1e-6 && back < kNoon + 1e-6,
               "ConvertTime", result);
        time->Release();
    }
}

// The type information comes from a library that a 32-bit executable carries.
void TestTypeInformation()
{
    auto* me = Make<_Me>(CLSID_Me, "a Me");
    if (!me) return;
    ITypeInfo* info = nullptr;
    TYPEATTR* attributes = nullptr;
    const HRESULT result = me->GetTypeInfo(0, LOCALE_NEUTRAL, &info);
    if (Expect(SUCCEEDED(result) && SUCCEEDED(info->GetTypeAttr(&attributes)), "type information",
               result)) {
        Expect(attributes->guid == __uuidof(_Me), "type information of Me");
        info->ReleaseTypeAttr(attributes);
    }
    if (info) info->Release();
    me->Release();
}

} // namespace

int main()
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    TestEvent();
    TestValues();
    TestTypeInformation();
    CoUninitialize();
    if (failures == 0) std::puts("the 64-bit client passed");
    return failures;
}
