#include "support/Remote.h"

namespace quill::test {

bool OnWine()
{
    return FindSystemFunction<const char*()>(L"ntdll.dll", "wine_get_version") != nullptr;
}

ScriptObject ObjectOf(const std::wstring& progId)
{
    CLSID id;
    ComPtr<IDispatch> object;
    HRESULT result = CLSIDFromProgID(progId.c_str(), &id);
    if (SUCCEEDED(result))
        result = CoCreateInstance(id, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object));
    if (FAILED(result))
        throw ScriptError(static_cast<unsigned>(result), progId, L"the object was not made");
    return ScriptObject(object.Get());
}

Program::Program(const std::wstring& name, const std::wstring& arguments)
{
    const std::wstring& here = ThisApartment().programPath;
    std::wstring line = L'"' + here.substr(0, here.find_last_of(L'\\') + 1) + name + L'"' +
                        (arguments.empty() ? L"" : L" ") + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &started))
        RaiseLastError();
    CloseHandle(started.hThread);
    process_.reset(started.hProcess);
}

DWORD ExitCode(const Event& process, DWORD milliseconds)
{
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(process.get(), milliseconds);
    GetExitCodeProcess(process.get(), &code);
    return code;
}

} // namespace quill::test
