// Entry point of quill.exe: hardening, command line, start-up, serving.

#include <vector>

#include "core/Apartment.h"
#include "core/AutomationError.h"
#include "core/Registration.h"
#include "core/Security.h"
#include "core/Server.h"
#include "core/Text.h"

namespace quill {

namespace {

enum class StartMode { Serve, Help, Register, RegisterForUser, Unregister, Nothing };

// True when one of the arguments is this switch, with a slash or a hyphen, in any case.
bool HasSwitch(const std::vector<std::wstring>& arguments, const wchar_t* name)
{
    for (const std::wstring& argument : arguments)
        if ((argument[0] == L'/' || argument[0] == L'-') &&
            _wcsicmp(argument.c_str() + 1, name) == 0)
            return true;
    return false;
}

// `commandLine` is what follows the program's name. The automation runtime adds "-Embedding" when
// it starts the server.
StartMode ChooseStartMode(const wchar_t* commandLine)
{
    if (*commandLine == L'\0') return StartMode::Register;
    std::vector<std::wstring> arguments;
    int count = 0;
    const Owned<LPWSTR*, LocalFree> split(CommandLineToArgvW(commandLine, &count));
    for (int index = 0; split && index < count; ++index)
        arguments.emplace_back(split.get()[index]);
    if (HasSwitch(arguments, L"Embedding") || HasSwitch(arguments, L"Automation"))
        return StartMode::Serve;
    if (wcscmp(commandLine, L"/?") == 0) return StartMode::Help;
    if (arguments.size() == 1 && HasSwitch(arguments, L"regserver")) return StartMode::Register;
    if (arguments.size() == 1 && HasSwitch(arguments, L"regserverperuser"))
        return StartMode::RegisterForUser;
    if (arguments.size() == 1 && HasSwitch(arguments, L"unregserver")) return StartMode::Unregister;
    return StartMode::Nothing;
}

// A server started by hand is asked for nothing but its help.
void ShowHelp()
{
    MessageBoxW(nullptr,
                L"quill.exe command line arguments:\r\n\r\n"
                L"/regserver\r\n\tregister this component (default arg.)\r\n"
                L"/unregserver\r\n\tunregister this component\r\n\r\n",
                L"QUILL by OBRA", MB_OK);
}

// Writes a line where the program was started from, if that place can show it: output that was
// redirected, or the console of the parent. Never opens a window.
void Report(const std::wstring& line)
{
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (!output && AttachConsole(ATTACH_PARENT_PROCESS)) output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (!output || output == INVALID_HANDLE_VALUE) return;
    const std::wstring text = line + L"\r\n";
    DWORD written;
    if (WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
        return;
    const std::string bytes = ToAnsi(text);
    WriteFile(output, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

// Before anything else is loaded: libraries come from the system folder only, a damaged heap ends
// the process, and a drive without a disk is an error of the call, and no system message box
// waits.
void Harden() noexcept
{
    using SetDefaultDllDirectoriesFunction = BOOL WINAPI(DWORD);
    if (const auto setDefaultDllDirectories = FindSystemFunction<SetDefaultDllDirectoriesFunction>(
            L"kernel32.dll", "SetDefaultDllDirectories"))
        setDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    SetDllDirectoryW(L"");
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
}

// Calls are signed and come from those who may call; clients that died are noticed soon; a fault
// inside a call is not hidden.
void SecureAutomation()
{
    // Without a descriptor the platform would admit everybody.
    Check(CoInitializeSecurity(AccessRights().Descriptor(), -1, nullptr, nullptr,
                               RPC_C_AUTHN_LEVEL_PKT_INTEGRITY, RPC_C_IMP_LEVEL_IDENTIFY, nullptr,
                               EOAC_NONE, nullptr));
    ComPtr<IGlobalOptions> options;
    if (SUCCEEDED(CoCreateInstance(CLSID_GlobalOptions, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_PPV_ARGS(&options)))) {
        options->Set(COMGLB_EXCEPTION_HANDLING, COMGLB_EXCEPTION_DONOT_HANDLE_ANY);
        options->Set(COMGLB_RO_SETTINGS, COMGLB_FAST_RUNDOWN);
    }
    BOOL suppress = FALSE; // the same for timer procedures
    SetUserObjectInformationW(GetCurrentProcess(), UOI_TIMERPROC_EXCEPTION_SUPPRESSION, &suppress,
                              sizeof suppress);
}

void Register(RegistrationScope scope)
{
    RegisterServer(scope, ThisApartment().programPath);
    Report(scope == RegistrationScope::AllUsers ? L"quill: registered for all users"
                                                : L"quill: registered for the current user");
}

void Unregister()
{
    const std::vector<RegistrationScope> found = UnregisterServer(ThisApartment().programPath);
    for (RegistrationScope scope : found)
        Report(scope == RegistrationScope::AllUsers ? L"quill: unregistered for all users"
                                                    : L"quill: unregistered for the current user");
    if (!found.empty()) return;
    const std::wstring other = RegisteredProgram();
    Report(other.empty() ? L"quill: nothing is registered"
                         : L"quill: not registered from here, but from " + other);
}

int Run(StartMode mode, const wchar_t* commandLine)
{
    // Only the objects need single-threaded apartments, and they get their own.
    const ApartmentRecord record(COINIT_MULTITHREADED);
    switch (mode) {
    case StartMode::Serve: SecureAutomation(); return RunServer();
    case StartMode::Help: ShowHelp(); return 0;
    case StartMode::Register: Register(DefaultRegistrationScope()); return 0;
    case StartMode::RegisterForUser: Register(RegistrationScope::CurrentUser); return 0;
    case StartMode::Unregister: Unregister(); return 0;
    // Kept as published: a command line that is not known does nothing, and is not a failure.
    case StartMode::Nothing:
        Report(std::wstring(L"quill: unknown command line: ") + commandLine +
               L"; it takes /regserver, /regserverperuser, /unregserver or /?");
        return 0;
    }
    return 0;
}

} // namespace

} // namespace quill

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t* commandLine, int)
{
    using namespace quill;
    Harden();
    try {
        return Run(ChooseStartMode(commandLine), commandLine);
    } catch (const AutomationError& error) {
        Report(L"quill: " + error.description);
        return error.number;
    } catch (...) {
        return E_UNEXPECTED;
    }
}
