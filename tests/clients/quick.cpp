// quick: the server, as it is in quill.exe, but without patience, to measure how it starts and ends
// at the moment when clients come.
#include "core/Apartment.h"
#include "core/Registration.h"
#include "core/Server.h"

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
{
    using namespace quill;
    const ApartmentRecord record(COINIT_MULTITHREADED);
    if (wcscmp(commandLine, L"/regserver") == 0)
        RegisterServer(DefaultRegistrationScope(), record.programPath);
    else if (wcscmp(commandLine, L"/unregserver") == 0)
        UnregisterServer(record.programPath);
    else
        return RunServer({.linger = 20, .firstClient = 3'000, .lastCall = 1'000});
    return 0;
}
