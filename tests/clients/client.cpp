// client WHAT: a client that the tests end by force. It does what it is told, sets an event, and
// stays without a look at its messages:
//
//     objects   holds one object of every class
//     list      has a list open          message   a message box
//     icon      has an icon in the notification area, with a balloon
//     windows   has an output and a progress window on show
//     clock     has a running clock      event     is being called by a clock, and does not answer
//     once      uses one object of every class, and ends
#include <cstdio>
#include <deque>

#include "core/Catalogue.h"
#include "support/EventListener.h"
#include "support/Remote.h"

namespace quill::test {
namespace {

void TellReady()
{
    SetEvent(Event(OpenEventW(EVENT_MODIFY_STATE, FALSE, kReady)).get());
}

void Do(const std::wstring& what)
{
    std::deque<ScriptObject> objects;
    const auto make = [&](const wchar_t* name) -> ScriptObject& {
        return objects.emplace_back(Remote(name));
    };
    if (what == L"objects" || what == L"once") {
        for (const CatalogueRow& row : kCatalogue) {
            UINT count = 0;
            make(row.name).Dispatch()->GetTypeInfoCount(&count);
        }
        if (what == L"once") return;
    } else if (what == L"list") {
        TellReady();
        make(L"List").Call(L"Selection", L"a\r\nb", 0, L"killed");
    } else if (what == L"message") {
        TellReady();
        make(L"MessageBox").Call(L"Show", L"killed", 0, L"killed");
    } else if (what == L"icon") {
        make(L"Notice").Put(L"IconID", 32516);
        objects[0].Put(L"BalloonText", L"killed");
        objects[0].Put(L"BalloonIcon", short{1});
        if (!objects[0].Call(L"Add")) return;
        objects[0].Call(L"ShowBalloon");
    } else if (what == L"windows") {
        make(L"Window").Call(L"Create", L"killed");
        make(L"ProgressWindow").Call(L"Create", L"killed");
    } else if (what == L"clock") {
        make(L"Clock").Call(L"SetTimer", 1'000'000);
    } else if (what == L"event") {
        static EventListener listener(make(L"Clock").Dispatch());
        objects[0].Call(L"SetTimer", 20);
        while (objects[0].Get(L"Running").Truth()) // until the event is on its way
            Sleep(5);
    }
    TellReady();
    Sleep(INFINITE);
}

} // namespace
} // namespace quill::test

int wmain(int count, wchar_t** arguments)
{
    const quill::ApartmentRecord record;
    try {
        quill::test::Do(count > 1 ? arguments[1] : L"");
    } catch (const std::exception& error) {
        std::printf("client: %s\n", error.what());
        return 2;
    }
    return 0;
}
