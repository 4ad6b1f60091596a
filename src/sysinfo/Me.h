// Quill.Me: the server process that a script talks to.
#pragma once

#include "core/Automation.h"

namespace quill {

// Lives on the server's main thread. Keeps nothing and raises no errors.
class Me final : public Automation<_Me> {
public:
    STDMETHODIMP get_About(BSTR* value) noexcept override { return Call(value, &Me::About); }
    STDMETHODIMP get_hInstance(LONG* value) noexcept override { return Call(value, &Me::Instance); }
    STDMETHODIMP get_Path(BSTR* value) noexcept override { return Call(value, &Me::Folder); }
    STDMETHODIMP get_ProcessID(LONG* value) noexcept override
    {
        return Get(value, static_cast<LONG>(GetCurrentProcessId()));
    }
    STDMETHODIMP get_ThreadID(LONG* value) noexcept override
    {
        return Get(value, static_cast<LONG>(GetCurrentThreadId()));
    }
    STDMETHODIMP get_Version(BSTR* value) noexcept override { return Call(value, &Me::Version); }
    STDMETHODIMP get_ParentProcessID(LONG* value) noexcept override
    {
        return Call(value, &Me::ParentProcess);
    }
    STDMETHODIMP get_CallerTID(LONG* value) noexcept override
    {
        return Call(value, &Me::CallerThread);
    }

private:
    static std::wstring About();
    static LONG Instance();
    static std::wstring Folder();
    static std::wstring Version();
    static LONG ParentProcess();
    static LONG CallerThread();
};

// A seam: who called.
struct CallerFunctions {
    decltype(&CoGetCallerTID) getThread = CoGetCallerTID;
};

} // namespace quill
