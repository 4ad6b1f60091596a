#include "support/Remote.h"

#include <cstdio>

namespace quill::test {

namespace {

constexpr UINT kAnswerDeadline = 2'000; // milliseconds
constexpr DWORD kEndDeadline = 10'000;

using Service = Owned<SC_HANDLE, CloseServiceHandle>;

// Wine goes on leading clients to a server that was ended by force, until its service for that
// starts anew. Clients start it when they need it.
void ForgetServers()
{
    const Service manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const Service service(
        OpenServiceW(manager.get(), L"RpcSs", SERVICE_STOP | SERVICE_QUERY_STATUS));
    SERVICE_STATUS status{};
    if (!ControlService(service.get(), SERVICE_CONTROL_STOP, &status)) return;
    const ULONGLONG end = GetTickCount64() + kEndDeadline;
    while (QueryServiceStatus(service.get(), &status) && status.dwCurrentState != SERVICE_STOPPED &&
           GetTickCount64() < end)
        Sleep(20);
}

} // namespace

bool OnWine()
{
    return FindSystemFunction<const char*()>(L"ntdll.dll", "wine_get_version") != nullptr;
}

void EndHungServers()
{
    HWND server = nullptr;
    while ((server = FindWindowExW(nullptr, server, L"quill.Server", nullptr)) != nullptr) {
        DWORD_PTR answer;
        if (SendMessageTimeoutW(server, WM_NULL, 0, 0, SMTO_BLOCK, kAnswerDeadline, &answer) ||
            !IsWindow(server))
            continue;
        DWORD id = 0;
        GetWindowThreadProcessId(server, &id);
        const Event process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
        const bool ended = process && TerminateProcess(process.get(), 1) &&
                           WaitForSingleObject(process.get(), kEndDeadline) == WAIT_OBJECT_0;
        std::printf("the server of process %lu does not answer, and was%s ended\n", id,
                    ended ? "" : " not");
        std::fflush(stdout);
        if (!ended) return;
        if (OnWine()) ForgetServers();
        server = nullptr;
    }
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

} // namespace quill::test
