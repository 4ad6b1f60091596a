// client SCRIPT [| WAIT]: a client that the tests end by force. It runs the script, sets an event,
// runs the second part, and stays without a look at its messages; without a second part it ends.
// An event of the script's Clock is ready too, and gets no answer.
#include <cstdio>

#include "support/Engine.h"
#include "support/EventListener.h"
#include "support/Remote.h"

namespace quill::test {
namespace {

void TellReady()
{
    SetEvent(Event(OpenEventW(EVENT_MODIFY_STATE, FALSE, kReady)).get());
}

void Run(const std::wstring& script)
{
    std::unique_ptr<EventListener> listener;
    Engine engine([&](const std::wstring& name) {
        ComPtr<IDispatch> clock = Remote(name).Dispatch();
        listener = std::make_unique<EventListener>(clock.Get(), [](const HeardEvent&) {
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

} // namespace
} // namespace quill::test

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
{
    const quill::ApartmentRecord record;
    try {
        quill::test::Run(commandLine);
    } catch (const std::exception& error) {
        std::printf("client: %s\n", error.what());
        return 2;
    }
    return 0;
}
