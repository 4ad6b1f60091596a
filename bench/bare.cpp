// The measure for quill.exe: the least that a server of its kind can be. One class, one property,
// two methods for byte arrays, one apartment, late binding through the type information; nothing
// that it could do without.
//
//     bare /regserver [MILLISECONDS]   registers it, to stay that long after its last object
#include <windows.h>

#include <oleauto.h>
#include <shlwapi.h>

#include <string>

#include "bare.h"

namespace {

// As in quill, so that both are warm equally long; a registration may ask for less.
UINT lingerMilliseconds = 5'000;
constexpr UINT kFirstClientMilliseconds = 30'000;

long locks = 0;
UINT_PTR timer = 0;
ITypeInfo* typeInfo = nullptr;

void Linger(UINT milliseconds)
{
    timer = SetTimer(nullptr, timer, milliseconds, nullptr);
}

void Lock()
{
    ++locks;
    CoAddRefServerProcess();
}

void Unlock()
{
    CoReleaseServerProcess();
    if (--locks == 0) Linger(lingerMilliseconds);
}

class BareObject final : public IBare {
public:
    BareObject() { Lock(); }
    BareObject(const BareObject&) = delete;
    BareObject& operator=(const BareObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        if (id != IID_IUnknown && id != IID_IDispatch && id != IID_IBare) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IBare*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override
    {
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override
    {
        *info = typeInfo;
        typeInfo->AddRef();
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override
    {
        return typeInfo->GetIDsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override
    {
        return typeInfo->Invoke(static_cast<IBare*>(this), id, flags, parameters, result, exception,
                                badArgument);
    }

    STDMETHODIMP get_Text(BSTR* value) override
    {
        *value = SysAllocStringLen(text_, SysStringLen(text_));
        return *value ? S_OK : E_OUTOFMEMORY;
    }
    STDMETHODIMP put_Text(BSTR value) override
    {
        return SysReAllocStringLen(&text_, value, SysStringLen(value)) ? S_OK : E_OUTOFMEMORY;
    }

    // A script's variable comes as itself: the platform has taken the reference off.
    STDMETHODIMP Take(VARIANT* bytes, LONG count, VARIANT_BOOL* result) override
    {
        const bool taken = V_VT(bytes) == (VT_ARRAY | VT_UI1) &&
                           V_ARRAY(bytes)->rgsabound[0].cElements == static_cast<ULONG>(count);
        *result = taken ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    STDMETHODIMP Give(VARIANT* bytes, LONG count, VARIANT_BOOL* result) override
    {
        SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(count));
        if (!array) return E_OUTOFMEMORY;
        VariantClear(bytes);
        V_ARRAY(bytes) = array;
        V_VT(bytes) = VT_ARRAY | VT_UI1;
        *result = VARIANT_TRUE;
        return S_OK;
    }

private:
    ~BareObject()
    {
        SysFreeString(text_);
        Unlock();
    }

    ULONG references_ = 0;
    BSTR text_ = nullptr;
};

class BareClass final : public IClassFactory {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        const bool known = id == IID_IUnknown || id == IID_IClassFactory;
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override
    {
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        auto* made = new BareObject;
        made->AddRef();
        const HRESULT result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL lock) override
    {
        if (lock)
            Lock();
        else
            Unlock();
        return S_OK;
    }
};

int Serve(ITypeLib* library)
{
    HRESULT result = library->GetTypeInfoOfGuid(IID_IBare, &typeInfo);
    if (FAILED(result)) return result;
    BareClass classObject;
    DWORD registration = 0;
    CoAddRefServerProcess(); // keeps the class object open while the server lingers
    result = CoRegisterClassObject(CLSID_Bare, &classObject, CLSCTX_LOCAL_SERVER,
                                   REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED, &registration);
    if (FAILED(result)) return result;
    Linger(kFirstClientMilliseconds);
    CoResumeClassObjects();

    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_TIMER && !message.hwnd && message.wParam == timer) {
            KillTimer(nullptr, timer);
            timer = 0;
            if (locks == 0) break;
        }
        DispatchMessageW(&message);
    }
    CoReleaseServerProcess();
    CoRevokeClassObject(registration);
    typeInfo->Release();
    return 0;
}

const wchar_t kProgId[] = L"QuillBench.Bare";
const wchar_t kClassKey[] = L"CLSID\\{6586988A-6E51-445C-A52E-F5181668ABD5}";

void SetKey(const std::wstring& key, const std::wstring& text)
{
    RegSetValueW(HKEY_CLASSES_ROOT, key.c_str(), REG_SZ, text.c_str(), 0);
}

// Started with `arguments`.
void Register(const wchar_t* program, const std::wstring& arguments)
{
    ITypeLib* library = nullptr;
    if (SUCCEEDED(LoadTypeLibEx(program, REGKIND_REGISTER, &library))) library->Release();
    SetKey(kClassKey, kProgId);
    SetKey(std::wstring(kClassKey) + L"\\LocalServer32",
           L'"' + std::wstring(program) + L'"' + arguments);
    SetKey(std::wstring(kClassKey) + L"\\ProgID", kProgId);
    SetKey(std::wstring(kProgId) + L"\\CLSID", L"{6586988A-6E51-445C-A52E-F5181668ABD5}");
}

void Unregister()
{
    UnRegisterTypeLib(LIBID_QuillBench, 1, 0, LOCALE_NEUTRAL, SYS_WIN32);
    SHDeleteKeyW(HKEY_CLASSES_ROOT, kClassKey);
    SHDeleteKeyW(HKEY_CLASSES_ROOT, kProgId);
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
{
    HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(result)) return result;
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring line = commandLine;
    const std::wstring registers = L"/regserver";
    if (line.starts_with(registers)) {
        Register(program, line.substr(registers.size()));
    } else if (wcscmp(commandLine, L"/unregserver") == 0) {
        Unregister();
    } else {
        if (const int asked = _wtoi(commandLine); asked > 0)
            lingerMilliseconds = static_cast<UINT>(asked);
        ITypeLib* library = nullptr;
        result = LoadTypeLibEx(program, REGKIND_NONE, &library);
        if (SUCCEEDED(result)) {
            result = Serve(library);
            library->Release();
        }
    }
    CoUninitialize();
    return result;
}
