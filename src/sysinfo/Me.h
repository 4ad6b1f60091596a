// Quill.Me: the server process that a script talks to.
#pragma once

#include "core/Automation.h"

namespace quill {

// Keeps nothing and raises no errors.
class Me final : public Automation<_Me> {
public:
    COMPUTED_PROPERTY(BSTR, About)
    COMPUTED_PROPERTY(LONG, hInstance)
    COMPUTED_PROPERTY(BSTR, Path)
    READ_ONLY_PROPERTY(LONG, ProcessID, static_cast<LONG>(GetCurrentProcessId()))
    COMPUTED_PROPERTY(LONG, ThreadID)
    COMPUTED_PROPERTY(BSTR, Version)
    COMPUTED_PROPERTY(LONG, ParentProcessID)
    COMPUTED_PROPERTY(LONG, CallerTID)

private:
    static std::wstring About();
    static LONG hInstance();
    static std::wstring Path();
    static std::wstring Version();
    static LONG ThreadID();
    static LONG ParentProcessID();
    static LONG CallerTID();
};

// A seam: who called.
struct CallerFunctions {
    decltype(&CoGetCallerTID) getThread = CoGetCallerTID;
};

} // namespace quill
