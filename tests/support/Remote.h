// Clients of the registered server, in the test's own process and in others.
#pragma once

#include "core/Apartment.h"
#include "support/ScriptObject.h"

namespace quill::test {

// Set by the program `client` when it has what it was asked for.
inline constexpr wchar_t kReady[] = L"quill.test.ready";

bool OnWine();

// Ends servers that do not answer within two seconds, by their process, and says so: one that hangs
// would take along every test that comes after.
void EndHungServers();

// A new object of a registered server. Throws ScriptError.
ScriptObject ObjectOf(const std::wstring& progId);
inline ScriptObject Remote(std::wstring_view className)
{
    return ObjectOf(L"Quill." + std::wstring(className));
}

// A program that lies beside this one.
class Program {
public:
    // `arguments` are what follows the program's name and a blank, to the letter.
    explicit Program(const std::wstring& name, const std::wstring& arguments)
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
    ~Program() { Kill(); }
    Program(Program&&) = default;

    void Kill() const
    {
        TerminateProcess(process_.get(), 1);
        WaitForSingleObject(process_.get(), 10'000);
    }
    // The exit code, or STILL_ACTIVE.
    DWORD Wait(DWORD milliseconds) const
    {
        DWORD code = STILL_ACTIVE;
        WaitForSingleObject(process_.get(), milliseconds);
        GetExitCodeProcess(process_.get(), &code);
        return code;
    }

private:
    Event process_;
};

// The client that is told to do something and to stay; true when it has done it.
class Client : public Program {
public:
    explicit Client(const std::wstring& what) : Program(L"client.exe", what) {}

    bool Ready() const { return WaitForSingleObject(ready_.get(), 20'000) == WAIT_OBJECT_0; }

private:
    Event ready_{CreateEventW(nullptr, FALSE, FALSE, kReady)};
};

} // namespace quill::test
