#include "support/Host.h"

#include "core/Paths.h"
#include "core/Text.h"
#include "services/Bytes.h"
#include "services/registryfn.h"
#include "support/Remote.h"
#include "support/Robot.h"
#include "support/Values.h"

namespace quill::test {

namespace {

constexpr DWORD kExampleDeadline = 45'000; // milliseconds

// One character a byte, both ways.
std::string Narrowed(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t unit : text)
        bytes += static_cast<char>(unit);
    return bytes;
}

std::wstring Contents(const std::wstring& path)
{
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) return L"<no file>";
    std::wstring text;
    for (std::istreambuf_iterator<char> byte(file), end; byte != end; ++byte)
        text += static_cast<unsigned char>(*byte);
    return text;
}

LONG NumberOf(const VARIANT& value)
{
    Variant number;
    Check(VariantChangeType(&number, const_cast<VARIANT*>(&value), 0, VT_I4));
    return V_I4(&number);
}

// Runs an example in the platform's script host, with `folder` as TEMP. Its last lines, with bars
// between them.
std::wstring RunExample(const TemporaryFolder& folder, const std::wstring& name,
                        const std::wstring& arguments, size_t wanted)
{
    auto script = std::filesystem::path(QUILL_EXAMPLES) / name;
    std::wstring commandLine =
        L"cscript.exe //nologo \"" + script.make_preferred().wstring() + L"\" " + arguments;
    const std::wstring printed = folder.Write(L"printed", "");
    SetEnvironmentVariableW(L"TEMP", folder.Path().c_str());
    DWORD exitCode = STILL_ACTIVE;
    {
        SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
        const FileHandle output(CreateFileW(printed.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                            &inheritable, OPEN_EXISTING, 0, nullptr));
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = output.get();
        PROCESS_INFORMATION process{};
        if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                            nullptr, &startup, &process))
            RaiseLastError();
        const Event thread(process.hThread);
        const Event owned(process.hProcess);
        if (WaitForSingleObject(process.hProcess, kExampleDeadline) == WAIT_OBJECT_0)
            GetExitCodeProcess(process.hProcess, &exitCode);
        else
            TerminateProcess(process.hProcess, 1);
    }
    if (exitCode != 0) return L"exit code " + std::to_wstring(exitCode);
    const std::vector<std::wstring> lines = SplitLines(Contents(printed));
    const size_t end = lines.size() - 1; // the last line ends in a line break
    std::wstring last;
    for (size_t line = end - std::min(wanted, end); line < end; ++line)
        last += (last.empty() ? L"" : L"|") + lines[line];
    return last;
}

// The elements of a list, each followed by a bar; before them what is not as usual.
std::wstring Items(const Variant& list)
{
    const SAFEARRAY* array = ArrayOf(list);
    if (!array) return L"no list: " + TextOf(list);
    std::wstring text;
    if (const int type = V_VT(&list) & VT_TYPEMASK; type != VT_VARIANT)
        text += std::to_wstring(type) + L':';
    if (array->rgsabound[0].lLbound != 0)
        text += L"from " + std::to_wstring(array->rgsabound[0].lLbound) + L':';
    for (const Variant& element : ElementsOf(*array, SIZE_MAX))
        text += TextOf(element) + L'|';
    return text;
}

Variant Typed(VARTYPE type, const Variant& given)
{
    const std::wstring text = TextOf(given);
    if (text.empty()) return OfType(type);
    Variant value;
    if (type == VT_R8 || type == VT_DATE) { // also what is no number
        value = Variant(std::wcstod(text.c_str(), nullptr));
        V_VT(&value) = type;
    } else {
        Check(VariantChangeType(&value, const_cast<Variant*>(&given), 0, type));
    }
    return value;
}

// The root and the path below it.
std::pair<HKEY, std::wstring> KeyOf(const VARIANT& path)
{
    const std::wstring text = TextOf(path);
    const size_t separator = text.find(L'\\');
    return {RootKeyOf(text.substr(0, separator)), text.substr(separator + 1)};
}

// Texts are stored as they are, with or without a NUL; of other types, one byte a character.
void SetRegistry(const VARIANT& path, const std::wstring& name, LONG type, const std::wstring& text)
{
    const auto [root, below] = KeyOf(path);
    const std::wstring wide = text + L'x'; // no NUL behind it, which the platform would store
    const std::string bytes = Narrowed(text);
    const bool isText = type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
    Check(HRESULT_FROM_WIN32(static_cast<DWORD>(
        RegSetKeyValueW(root, below.c_str(), name.c_str(), static_cast<DWORD>(type),
                        isText ? static_cast<const void*>(wide.data()) : bytes.data(),
                        static_cast<DWORD>(isText ? 2 * text.size() : bytes.size())))));
}

} // namespace

bool IsServerRun()
{
    return _wgetenv(L"QUILL_SERVER") != nullptr;
}

ComPtr<IDispatch> MakeObject(const std::wstring& className)
{
    return (IsServerRun() ? Remote(className) : ScriptObject::Make(className)).Dispatch();
}

std::wstring TextOf(const VARIANT& value)
{
    Variant text;
    if (FAILED(VariantChangeType(&text, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR)))
        return L'<' + std::to_wstring(V_VT(&value)) + L'>';
    return {V_BSTR(&text) ? V_BSTR(&text) : L"", SysStringLen(V_BSTR(&text))};
}

HWND Host::WindowOf(const VARIANT& window)
{
    if (V_VT(&window) != VT_BSTR) return static_cast<HWND>(LongToHandle(NumberOf(window)));
    const std::wstring text = TextOf(window);
    const size_t bar = text.find(L'>');
    const std::wstring name = text.substr(0, bar);
    HWND top = FindWindowW(nullptr, name.c_str());
    if (!top) top = FindWindowW(name.c_str(), nullptr);
    if (!top || bar == std::wstring::npos) return top;
    const std::wstring rest = text.substr(bar + 1);
    const size_t colon = rest.find(L':');
    return FindWindowExW(top, nullptr, rest.substr(0, colon).c_str(),
                         colon == std::wstring::npos ? nullptr : rest.c_str() + colon + 1);
}

const Host::Member Host::kMembers[] = {
    {L"folder", 0, [](Host& host, const Arguments&) { return Variant(host.folder.Path(L"")); }},
    {L"nul", 0, [](Host&, const Arguments&) { return Variant(std::wstring_view(L"\0", 1)); }},
    {L"Make", 1,
     [](Host&, const Arguments& given) { return Variant(MakeObject(TextOf(given[0])).Get()); }},

    // A file's bytes as text of one character each. Writing makes its folder.
    {L"Write", 2,
     [](Host& host, const Arguments& given) {
         const std::filesystem::path path(host.folder.Path(TextOf(given[0])));
         std::filesystem::create_directories(path.parent_path());
         host.folder.Write(TextOf(given[0]), Narrowed(TextOf(given[1])));
         return Variant();
     }},
    {L"Read", 1,
     [](Host&, const Arguments& given) { return Variant(Contents(TextOf(given[0]))); }},
    {L"Delete", 1,
     [](Host&, const Arguments& given) {
         return Variant(DeleteFileW(TextOf(given[0]).c_str()) != FALSE);
     }},
    // Makes a folder the current one; which one was before.
    {L"Enter", 1,
     [](Host&, const Arguments& given) {
         const std::wstring before = CurrentFolder();
         SetCurrentDirectoryW(TextOf(given[0]).c_str());
         return Variant(before);
     }},
    {L"Env", 1,
     [](Host&, const Arguments& given) {
         wchar_t value[MAX_PATH]{};
         GetEnvironmentVariableW(TextOf(given[0]).c_str(), value, MAX_PATH);
         return Variant(std::wstring_view(value));
     }},
    {L"Run", 3,
     [](Host& host, const Arguments& given) {
         return Variant(RunExample(host.folder, TextOf(given[0]), TextOf(given[1]),
                                   static_cast<size_t>(NumberOf(given[2]))));
     }},

    // Hears the events of an object from now on; how many of a name came in, and the argument of
    // one. On runs a statement at each.
    {L"Listen", 1,
     [](Host& host, const Arguments& given) {
         host.listener_ = std::make_unique<EventListener>(V_DISPATCH(&given[0]));
         return Variant();
     }},
    {L"Heard", 1,
     [](Host& host, const Arguments& given) {
         return Variant(static_cast<LONG>(host.listener_->Count(TextOf(given[0]))));
     }},
    {L"Told", 2,
     [](Host& host, const Arguments& given) {
         const HeardEvent* event =
             host.listener_->Find(TextOf(given[0]), static_cast<size_t>(NumberOf(given[1])));
         return event ? Variant::Dereferenced(event->arguments.at(0)) : Variant();
     }},
    {L"OnEvent", 2,
     [](Host& host, const Arguments& given) {
         host.reactions_.emplace_back([&host, statement = TextOf(given[1])] {
             host.script_(statement);
         }).Hear(V_DISPATCH(&given[0]));
         return Variant();
     }},
    // The object's clients die, as the platform reports it.
    {L"Orphan", 1,
     [](Host&, const Arguments& given) {
         LastClient(V_DISPATCH(&given[0])).Die();
         return Variant();
     }},

    // Of the platform, in its place.
    {L"Answer", 2,
     [](Host& host, const Arguments& given) {
         host.stage.Answer(TextOf(given[0]), TextOf(given[1]));
         return Variant();
     }},

    // Windows.
    {L"Exists", 1,
     [](Host&, const Arguments& given) { return Variant(IsWindow(WindowOf(given[0])) != FALSE); }},
    {L"Send", 4,
     [](Host&, const Arguments& given) {
         return Variant(static_cast<LONG>(
             SendMessageW(WindowOf(given[0]), static_cast<UINT>(NumberOf(given[1])),
                          static_cast<WPARAM>(NumberOf(given[2])), NumberOf(given[3]))));
     }},
    {L"Message", 1,
     [](Host&, const Arguments& given) {
         return Variant(static_cast<LONG>(RegisterWindowMessageW(TextOf(given[0]).c_str())));
     }},
    {L"Caption", 1,
     [](Host&, const Arguments& given) { return Variant(Desk::TextOf(WindowOf(given[0]))); }},
    {L"Front", 0,
     [](Host&, const Arguments&) { return Variant(Desk::TextOf(GetForegroundWindow())); }},
    {L"Previous", 1, // in the order of the tab key
     [](Host&, const Arguments& given) {
         return Variant(Desk::TextOf(GetWindow(WindowOf(given[0]), GW_HWNDPREV)));
     }},
    {L"Size", 1,
     [](Host&, const Arguments& given) {
         const SIZE size = Desk::SizeOf(WindowOf(given[0]));
         return Variant(std::to_wstring(size.cx) + L'x' + std::to_wstring(size.cy));
     }},
    {L"Resize", 3,
     [](Host&, const Arguments& given) {
         SetWindowPos(WindowOf(given[0]), nullptr, 0, 0, NumberOf(given[1]), NumberOf(given[2]),
                      SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
         return Variant();
     }},
    {L"Style", 1,
     [](Host&, const Arguments& given) {
         return Variant(GetWindowLongW(WindowOf(given[0]), GWL_STYLE));
     }},
    {L"IsTopmost", 1,
     [](Host&, const Arguments& given) {
         return Variant((GetWindowLongW(WindowOf(given[0]), GWL_EXSTYLE) & WS_EX_TOPMOST) != 0);
     }},
    {L"FontOf", 1,
     [](Host&, const Arguments& given) {
         const LOGFONTW font = Desk::FontOf(WindowOf(given[0]));
         return Variant(font.lfFaceName + (L' ' + std::to_wstring(font.lfHeight) + L' ') +
                        std::to_wstring(font.lfWeight));
     }},

    // Values that the language cannot make; the bytes of hexadecimal digits as text.
    {L"X", 1,
     [](Host&, const Arguments& given) {
         const std::wstring digits = TextOf(given[0]);
         std::wstring text;
         for (size_t index = 0; index < digits.size(); index += 2)
             text += static_cast<wchar_t>(std::stoi(digits.substr(index, 2), nullptr, 16));
         return Variant(text);
     }},
    {L"Bytes", 1,
     [](Host&, const Arguments& given) { return ByteArray(Narrowed(TextOf(given[0]))); }},
    {L"Typed", 2,
     [](Host&, const Arguments& given) {
         return Typed(static_cast<VARTYPE>(NumberOf(given[0])), given[1]);
     }},
    {L"Lower", 2,
     [](Host&, const Arguments& given) {
         return StartingAt(NumberOf(given[1]), Variant::Dereferenced(given[0]));
     }},
    // What these properties of an object are: its state.
    {L"Shot", 2,
     [](Host&, const Arguments& given) {
         ScriptObject object(V_DISPATCH(&given[0]));
         std::wstring shot;
         std::wistringstream names(TextOf(given[1]));
         for (std::wstring name; names >> name;)
             shot += name + L'=' + TextOf(object.Get(name.c_str())) + L' ';
         return Variant(shot);
     }},
    {L"Square", 0, [](Host&, const Arguments&) { return Square(); }},
    {L"Items", 1, [](Host&, const Arguments& given) { return Variant(Items(given[0])); }},
    {L"TypeOf", 1,
     [](Host&, const Arguments& given) { return Variant(static_cast<LONG>(V_VT(&given[0]))); }},

    {L"RegMake", 1,
     [](Host&, const Arguments& given) {
         const auto [root, below] = KeyOf(given[0]);
         HKEY key = nullptr;
         RegCreateKeyW(root, below.c_str(), &key);
         const RegistryKey owned(key);
         return Variant();
     }},
    {L"RegSet", 4,
     [](Host&, const Arguments& given) {
         SetRegistry(given[0], TextOf(given[1]), NumberOf(given[2]), TextOf(given[3]));
         return Variant();
     }},
    {L"RegDelete", 1,
     [](Host&, const Arguments& given) {
         const auto [root, below] = KeyOf(given[0]);
         RegDeleteTreeW(root, below.c_str());
         return Variant();
     }},
};

STDMETHODIMP Host::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept
{
    for (size_t index = 0; index < std::size(kMembers); ++index)
        if (_wcsicmp(names[0], kMembers[index].name) == 0) {
            ids[0] = static_cast<DISPID>(index + 1);
            return S_OK;
        }
    return DISP_E_UNKNOWNNAME;
}

STDMETHODIMP Host::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                          EXCEPINFO*, UINT*) noexcept
try {
    if (id < 1 || static_cast<size_t>(id) > std::size(kMembers)) return DISP_E_MEMBERNOTFOUND;
    Arguments arguments;
    for (UINT index = parameters->cArgs; index-- > 0;)
        arguments.push_back(Variant::Dereferenced(parameters->rgvarg[index]));
    if (arguments.size() != kMembers[id - 1].arguments) return DISP_E_BADPARAMCOUNT;
    Variant value = kMembers[id - 1].run(*this, arguments);
    if (result) *result = value.Detach();
    return S_OK;
} catch (const AutomationError& error) {
    return error.number;
} catch (...) {
    return E_FAIL;
}

} // namespace quill::test
