#include "support/Remote.h"

#include <process.h>

namespace quill::test {

ComPtr<IDispatch> ObjectOf(const std::wstring& progId)
{
    CLSID id;
    ComPtr<IDispatch> object;
    HRESULT result = CLSIDFromProgID(progId.c_str(), &id);
    if (SUCCEEDED(result))
        result = CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object));
    if (FAILED(result))
        throw ScriptError(static_cast<unsigned>(result), progId, L"the object was not made");
    return object;
}

Program::Program(const std::wstring& name, const std::wstring& arguments)
{
    const std::wstring& here = ThisApartment().programPath;
    const std::wstring path = here.substr(0, here.find_last_of(L'\\') + 1) + name;
    const intptr_t process = _wspawnl(_P_NOWAIT, path.c_str(), name.c_str(),
                                      arguments.empty() ? nullptr : arguments.c_str(), nullptr);
    if (process == -1) throw std::runtime_error("cannot start " + Narrow(path)); // not a handle
    process_.reset(reinterpret_cast<HANDLE>(process));
}

DWORD ExitCode(const Event& process, DWORD milliseconds)
{
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(process.get(), milliseconds);
    GetExitCodeProcess(process.get(), &code);
    return code;
}

} // namespace quill::test
