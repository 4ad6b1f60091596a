// quick: the server, as it is in quill.exe, but without patience, to measure how it starts and ends
// at the moment when clients come.
#include "core/Apartment.h"
#include "core/AutomationError.h"
#include "core/Registration.h"
#include "core/Server.h"

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
{
    using namespace quill;
    int exitCode = 0;
    try {
        const ApartmentRecord record(COINIT_MULTITHREADED);
        const std::wstring program = ThisApartment().programPath;
        if (wcscmp(commandLine, L"/regserver") == 0)
            RegisterServer(DefaultRegistrationScope(), program);
        else if (wcscmp(commandLine, L"/unregserver") == 0)
            UnregisterServer(program);
        else
            exitCode = RunServer({.linger = 20, .firstClient = 3'000, .lastCall = 1'000});
    } catch (const AutomationError& error) {
        exitCode = error.number;
    }
    return exitCode;
}
