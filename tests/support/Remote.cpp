#include "support/Remote.h"

#include <cstdio>

namespace quill::test {

namespace {

constexpr UINT kAnswerDeadline = 2'000; // milliseconds
constexpr DWORD kEndDeadline = 10'000;

} // namespace

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
