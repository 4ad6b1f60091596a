// Clients of the registered server, in the test's own process and in others.
#pragma once

#include "core/Apartment.h"
#include "support/LateBound.h"

namespace quill::test {

// Set by the program `client` when it has what it was asked for.
inline constexpr wchar_t kReady[] = L"quill.test.ready";

// A new object of a registered server. Throws ScriptError.
ComPtr<IDispatch> ObjectOf(const std::wstring& progId);
inline ComPtr<IDispatch> Remote(std::wstring_view className)
{
    return ObjectOf(L"Quill." + std::wstring(className));
}

// Of a process, once it has ended, or STILL_ACTIVE.
DWORD ExitCode(const Event& process, DWORD milliseconds);

// A program that lies beside this one.
class Program {
public:
    // `arguments` are what follows the program's name and a blank, to the letter.
    Program(const std::wstring& name, const std::wstring& arguments);
    ~Program() { Kill(); }
    Program(Program&&) = default;

    void Kill() const
    {
        TerminateProcess(process_.get(), 1);
        Wait(10'000);
    }
    DWORD Wait(DWORD milliseconds) const { return ExitCode(process_, milliseconds); }

private:
    Event process_;
};

// The program `client`; ready when it has done the first part of its script.
class Client : public Program {
public:
    explicit Client(const std::wstring& script) : Program(L"client.exe", script) {}

    bool Ready() const { return WaitForSingleObject(ready_.get(), 60'000) == WAIT_OBJECT_0; }

private:
    Event ready_{CreateEventW(nullptr, FALSE, FALSE, kReady)};
};

} // namespace quill::test
