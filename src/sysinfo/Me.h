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
    COMPUTED_PROPERTY(BSTR, FullVersion)
    ROUTINE(VARIANT_BOOL, Has, IsPublished, (BSTR name), name)
    COMPUTED_PROPERTY(VARIANT_BOOL, Interactive)

private:
    static std::wstring About();
    static LONG hInstance();
    static std::wstring Path();
    static std::wstring Version();
    static LONG ThreadID();
    static LONG ParentProcessID();
    static LONG CallerTID();
    static std::wstring FullVersion();
    static bool Interactive();
};

// A seam: the window station of the process.
struct StationFunctions {
    decltype(&GetProcessWindowStation) current = GetProcessWindowStation;
};

// A seam: who called.
struct CallerFunctions {
    decltype(&CoGetCallerTID) getThread = CoGetCallerTID;
};

} // namespace quill
