#include "core/Registration.h"

#include "core/AutomationError.h"
#include "core/Catalogue.h"
#include "core/Paths.h"
#include "core/TypeLibrary.h"

namespace quill {

namespace {

constexpr wchar_t kDualProxy[] = L"{00020424-0000-0000-C000-000000000046}";
constexpr wchar_t kDispatchProxy[] = L"{00020420-0000-0000-C000-000000000046}";

struct RegistryEntry {
    std::wstring key;  // below the root that it is written to
    std::wstring name; // empty: the key's default value
    std::wstring text;
};

// A key below which we register, as 32-bit or as 64-bit programs see it.
struct Root {
    HKEY hive;
    REGSAM view;
    std::wstring path;
};

// Where the classes of all users or of the current one are.
std::vector<Root> RootsOf(HKEY hive)
{
    const std::wstring path = L"Software\\Classes\\";
    BOOL on64BitWindows = FALSE;
    IsWow64Process(GetCurrentProcess(), &on64BitWindows);
    if (!on64BitWindows) return {{hive, 0, path}};
    return {{hive, KEY_WOW64_32KEY, path}, {hive, KEY_WOW64_64KEY, path}};
}

// Where the sources of the application event log are, one for programs of all kinds. The event
// viewer reads there which file has the texts of a source's events.
const Root& EventSources()
{
    static const Root root{HKEY_LOCAL_MACHINE, 0,
                           L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\"};
    return root;
}

constexpr wchar_t kEventSource[] = L"Quill";
constexpr wchar_t kMessageFile[] = L"EventMessageFile";
constexpr DWORD kEventTypes =
    EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;

std::wstring Braced(const GUID& id)
{
    wchar_t text[39];
    StringFromGUID2(id, text, static_cast<int>(std::size(text)));
    return text;
}

// The name of an entry of the type library, or its description; empty where it has none.
std::wstring OrEmpty(const Bstr& text)
{
    return text ? text.get() : L"";
}

std::wstring ProgId(const CatalogueRow& row)
{
    return std::wstring(L"Quill.") + row.name;
}

// The keys that hold the path of the executable: who owns a registration is read there.
std::wstring ClassKey(const CatalogueRow& row)
{
    return L"CLSID\\" + Braced(row.id);
}

std::wstring LibraryKey(const TLIBATTR& library)
{
    return L"TypeLib\\" + Braced(library.guid);
}

std::wstring LibraryVersion(const TLIBATTR& library)
{
    return std::to_wstring(library.wMajorVerNum) + L'.' + std::to_wstring(library.wMinorVerNum);
}

std::wstring LibraryFileKey(const TLIBATTR& library)
{
    return LibraryKey(library) + L'\\' + LibraryVersion(library) + L"\\0\\win32";
}

TLIBATTR LibraryAttributes()
{
    TLIBATTR* attributes = nullptr;
    Check(TypeLibrary()->GetLibAttr(&attributes));
    const TLIBATTR copy = *attributes;
    TypeLibrary()->ReleaseTLibAttr(attributes);
    return copy;
}

struct PublishedInterface {
    IID id;
    std::wstring name;
    bool dual;
};

std::vector<PublishedInterface> PublishedInterfaces()
{
    std::vector<PublishedInterface> interfaces;
    ITypeLib* library = TypeLibrary();
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        ComPtr<ITypeInfo> info;
        TYPEATTR* attributes = nullptr;
        Bstr name;
        Check(library->GetTypeInfo(index, &info));
        Check(info->GetTypeAttr(&attributes));
        const TYPEATTR copy = *attributes;
        info->ReleaseTypeAttr(attributes);
        if (copy.typekind != TKIND_DISPATCH && copy.typekind != TKIND_INTERFACE) continue;
        Check(info->GetDocumentation(MEMBERID_NIL, Into(name), nullptr, nullptr, nullptr));
        interfaces.push_back({copy.guid, OrEmpty(name), (copy.wTypeFlags & TYPEFLAG_FDUAL) != 0});
    }
    return interfaces;
}

std::vector<RegistryEntry> Values(const std::wstring& program)
{
    const TLIBATTR library = LibraryAttributes();
    const std::wstring libraryId = Braced(library.guid);
    const std::wstring version = LibraryVersion(library);
    std::vector<RegistryEntry> values;

    for (const CatalogueRow& row : kCatalogue) {
        const std::wstring progId = ProgId(row);
        const std::wstring versioned = progId + L".1";
        const std::wstring key = ClassKey(row);
        values.push_back({key, L"", progId});
        values.push_back({key + L"\\LocalServer32", L"", L'"' + program + L'"'});
        values.push_back({key + L"\\LocalServer32", L"ServerExecutable", program});
        values.push_back({key + L"\\ProgID", L"", versioned});
        values.push_back({key + L"\\VersionIndependentProgID", L"", progId});
        values.push_back({key + L"\\Programmable", L"", L""});
        values.push_back({key + L"\\TypeLib", L"", libraryId});
        values.push_back({key + L"\\Version", L"", version});
        for (const std::wstring& name : {progId, versioned}) {
            values.push_back({name, L"", progId});
            values.push_back({name + L"\\CLSID", L"", Braced(row.id)});
        }
        values.push_back({progId + L"\\CurVer", L"", versioned});
    }

    Bstr description;
    Check(TypeLibrary()->GetDocumentation(-1, nullptr, Into(description), nullptr, nullptr));
    const std::wstring libraryKey = LibraryKey(library) + L'\\' + version;
    values.push_back({libraryKey, L"", OrEmpty(description)});
    // The platform sets one more flag in a library that it has loaded.
    values.push_back({libraryKey + L"\\FLAGS", L"",
                      std::to_wstring(library.wLibFlags & ~LIBFLAG_FHASDISKIMAGE)});
    values.push_back({libraryKey + L"\\HELPDIR", L"", FolderOf(program)});
    values.push_back({LibraryFileKey(library), L"", program});

    for (const PublishedInterface& published : PublishedInterfaces()) {
        const std::wstring key = L"Interface\\" + Braced(published.id);
        values.push_back({key, L"", published.name});
        values.push_back(
            {key + L"\\ProxyStubClsid32", L"", published.dual ? kDualProxy : kDispatchProxy});
        values.push_back({key + L"\\TypeLib", L"", libraryId});
        values.push_back({key + L"\\TypeLib", L"Version", version});
    }
    return values;
}

// Opens a key below a root. A Windows error code.
LSTATUS Open(const Root& root, const std::wstring& name, REGSAM access, RegistryKey& key)
{
    return RegOpenKeyExW(root.hive, (root.path + name).c_str(), 0, access | root.view, Into(key));
}

void Write(const Root& root, const RegistryEntry& value)
{
    RegistryKey key;
    CheckWin32(RegCreateKeyExW(root.hive, (root.path + value.key).c_str(), 0, nullptr, 0,
                               KEY_SET_VALUE | root.view, nullptr, Into(key), nullptr));
    const auto bytes = static_cast<DWORD>((value.text.size() + 1) * sizeof(wchar_t));
    CheckWin32(RegSetValueExW(key.get(), value.name.c_str(), 0, REG_SZ,
                              reinterpret_cast<const BYTE*>(value.text.c_str()), bytes));
}

// A text value of a key, the default one if no other is named; empty when there is none.
std::wstring Read(const Root& root, const std::wstring& name, const wchar_t* value = nullptr)
{
    RegistryKey key;
    if (Open(root, name, KEY_QUERY_VALUE, key) != ERROR_SUCCESS) return {};
    std::wstring text(4096, L'\0');
    auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(key.get(), nullptr, value, RRF_RT_REG_SZ, nullptr, text.data(), &bytes))
        return {};
    text.resize(bytes / sizeof(wchar_t) - 1);
    return text;
}

// Removes a key and everything below it; does nothing if there is none.
void Remove(const Root& root, const std::wstring& name)
{
    RegistryKey key;
    LSTATUS status = Open(root, name, KEY_ALL_ACCESS, key);
    if (status == ERROR_FILE_NOT_FOUND) return;
    CheckWin32(status);
    CheckWin32(RegDeleteTreeW(key.get(), nullptr));
    status = RegDeleteKeyExW(root.hive, (root.path + name).c_str(), root.view, 0);
    if (status != ERROR_FILE_NOT_FOUND) CheckWin32(status);
}

// The same, but only if the key is empty.
void RemoveIfEmpty(const Root& root, const std::wstring& name)
{
    RegistryKey key;
    if (Open(root, name, KEY_READ, key) != ERROR_SUCCESS) return;
    DWORD keys = 0;
    DWORD values = 0;
    CheckWin32(RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                                &values, nullptr, nullptr, nullptr, nullptr));
    if (keys == 0 && values == 0) Remove(root, name);
}

bool SamePath(const std::wstring& left, const std::wstring& right)
{
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
}

// True when something was there.
bool RemoveFrom(const Root& root, const std::wstring& program)
{
    bool found = false;
    for (const CatalogueRow& row : kCatalogue) {
        const std::wstring server = Read(root, ClassKey(row) + L"\\LocalServer32");
        if (!SamePath(server, L'"' + program + L'"')) continue;
        found = true;
        const std::wstring progId = ProgId(row);
        Remove(root, progId);
        Remove(root, progId + L".1");
        Remove(root, ClassKey(row));
    }
    const TLIBATTR library = LibraryAttributes();
    const std::wstring file = Read(root, LibraryFileKey(library));
    // Interfaces do not name the executable; they go with its type library.
    if (file.empty() || SamePath(file, program)) {
        for (const PublishedInterface& published : PublishedInterfaces())
            Remove(root, L"Interface\\" + Braced(published.id));
    }
    if (SamePath(file, program)) {
        found = true;
        Remove(root, LibraryKey(library) + L'\\' + LibraryVersion(library));
        RemoveIfEmpty(root, LibraryKey(library));
    }
    return found;
}

// The executable has the texts of our events.
void WriteEventSource(const std::wstring& program)
{
    const Root& root = EventSources();
    Write(root, {kEventSource, kMessageFile, program});
    CheckWin32(RegSetKeyValueW(root.hive, (root.path + kEventSource).c_str(), L"TypesSupported",
                               REG_DWORD, &kEventTypes, sizeof kEventTypes));
}

void RemoveEventSource(const std::wstring& program)
{
    const Root& root = EventSources();
    if (SamePath(Read(root, kEventSource, kMessageFile), program)) Remove(root, kEventSource);
}

} // namespace

RegistrationScope DefaultRegistrationScope() noexcept
{
    BYTE identifier[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof identifier;
    BOOL administrator = FALSE;
    if (CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, identifier, &size))
        CheckTokenMembership(nullptr, identifier, &administrator);
    return administrator ? RegistrationScope::AllUsers : RegistrationScope::CurrentUser;
}

void RegisterServer(RegistrationScope scope, const std::wstring& program)
{
    const HKEY hive = scope == RegistrationScope::AllUsers ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    const std::vector<RegistryEntry> values = Values(program);
    for (const Root& root : RootsOf(hive))
        for (const RegistryEntry& value : values)
            Write(root, value);
    // The event log belongs to the machine; events of an unknown source are recorded all the same.
    if (scope == RegistrationScope::AllUsers) WriteEventSource(program);
}

std::vector<RegistrationScope> UnregisterServer(const std::wstring& program)
{
    std::vector<RegistrationScope> found;
    // All users first: without the rights for that, nothing is removed rather than half.
    for (const auto& [hive, scope] :
         {std::pair{HKEY_LOCAL_MACHINE, RegistrationScope::AllUsers},
          std::pair{HKEY_CURRENT_USER, RegistrationScope::CurrentUser}}) {
        bool here = false;
        for (const Root& root : RootsOf(hive))
            here |= RemoveFrom(root, program);
        if (here) found.push_back(scope);
    }
    RemoveEventSource(program);
    return found;
}

std::wstring RegisteredProgram()
{
    const std::wstring key = ClassKey(*std::begin(kCatalogue)) + L"\\LocalServer32";
    for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
        for (const Root& root : RootsOf(hive))
            if (std::wstring program = Read(root, key, L"ServerExecutable"); !program.empty())
                return program;
    return {};
}

} // namespace quill
