// client SCRIPT [| WAIT]: a client that the tests end by force. It runs the script, sets an event,
// runs the second part, and stays without a look at its messages; without a second part it ends.
// An event of the script's Clock is ready too, and gets no answer.
//
// client /regserver, /unregserver: registers itself in place of quill.exe: the same server, but
// without patience, which ends at the moment when clients come.
#include <cstdio>

#include "core/Registration.h"
#include "core/Server.h"
#include "support/Engine.h"
#include "support/Listener.h"
#include "support/Remote.h"

namespace quill::test {
namespace {

void TellReady()
{
    SetEvent(Event(OpenEventW(EVENT_MODIFY_STATE, FALSE, kReady)).get());
}

void RunScript(const std::wstring& script)
{
    Engine engine([&](const std::wstring& name) {
        ComPtr<IDispatch> clock = Remote(name);
        Listener::Of(clock.Get(), [](const HeardEvent&) {
            TellReady();
            Sleep(INFINITE);
        });
        return clock;
    });
    engine.Add(L"Clock");
    const size_t bar = std::min(script.find(L'|'), script.size());
    if (const ScriptError error = engine.Run(script.substr(0, bar)).error; error.number)
        throw error;
    if (bar == script.size()) return;
    TellReady();
    engine.Run(script.substr(bar + 1));
    Sleep(INFINITE);
}

int Run(const std::wstring& commandLine)
{
    const bool serves = commandLine.starts_with(L'/') || commandLine.starts_with(L'-');
    const ApartmentRecord record(serves ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED);
    if (commandLine == L"/regserver")
        RegisterServer(DefaultRegistrationScope(), record.programPath);
    else if (commandLine == L"/unregserver")
        UnregisterServer(record.programPath);
    else if (serves)
        return RunServer({.linger = 20, .firstClient = 3'000, .lastCall = 1'000});
    else
        RunScript(commandLine);
    return 0;
}

} // namespace
} // namespace quill::test

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
try {
    return quill::test::Run(commandLine);
} catch (const std::exception& error) {
    std::printf("client: %s\n", error.what());
    return 2;
}
