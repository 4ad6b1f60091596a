#include "support/Host.h"

#include <commctrl.h>

#include <algorithm>
#include <sstream>
#include <thread>

#include "core/Paths.h"
#include "core/Text.h"
#include "support/Engine.h"
#include "support/LateBound.h"
#include "support/Robot.h"

namespace quill::test {

namespace {

// One character a byte, both ways.
std::string Narrowed(const std::wstring& text)
{
    return {text.begin(), text.end()};
}
std::wstring Contents(const std::wstring& path)
{
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) return L"<no file>";
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    return Decode(bytes, 28591);
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
    Variant value = OfType(type);
    const std::wstring text = TextOf(given);
    if (type == VT_R8 || type == VT_DATE) // also what is no number
        V_R8(&value) = std::wcstod(text.c_str(), nullptr);
    else if (!text.empty())
        Check(VariantChangeType(&value, const_cast<Variant*>(&given), 0, type));
    return value;
}

// A control's left, top, width and height in the frame of its window; a window's size, and class
// and place of its visible controls, in the order of the tab key.
std::wstring PlaceOf(HWND window)
{
    const HWND root = GetAncestor(window, GA_ROOT);
    const RECT frame = Desk::PlaceOf(root);
    const RECT place = Desk::PlaceOf(window);
    const SIZE size = Desk::SizeOf(window);
    std::wostringstream text;
    if (window != root) {
        text << place.left - frame.left << ' ' << place.top - frame.top << ' ' << size.cx << ' '
             << size.cy;
        return text.str();
    }
    text << size.cx << 'x' << size.cy << ' ';
    for (HWND each = GetWindow(window, GW_CHILD); each; each = GetWindow(each, GW_HWNDNEXT))
        if (IsWindowVisible(each)) text << Desk::ClassOf(each) << ' ' << PlaceOf(each) << '|';
    return text.str();
}

// The cells that a list view shows, with commas between them, and a bar behind each row.
std::wstring Rows(HWND view)
{
    const int columns = Header_GetItemCount(ListView_GetHeader(view));
    std::wstring text;
    for (int cell = 0; cell < ListView_GetItemCount(view) * columns; ++cell) {
        wchar_t shown[300] = L"";
        ListView_GetItemText(view, cell / columns, cell % columns, shown, 300);
        text += shown + std::wstring((cell + 1) % columns ? L"," : L"|");
    }
    return text;
}

// The lowest row, or the last column, with something drawn on the screen; -1 when the control is
// empty.
LONG Ink(HWND control, bool column)
{
    RECT area{};
    GetClientRect(control, &area);
    const Owned<HBITMAP, DeleteObject> bitmap(
        CreateBitmap(area.right, area.bottom, 1, 32, nullptr));
    const Owned<HDC, DeleteDC> device(CreateCompatibleDC(nullptr));
    SelectObject(device.get(), bitmap.get());
    const HDC shown = GetDC(control);
    BitBlt(device.get(), 0, 0, area.right, area.bottom, shown, 0, 0, SRCCOPY);
    ReleaseDC(control, shown);
    std::vector<DWORD> pixels(static_cast<size_t>(area.right * area.bottom));
    GetBitmapBits(bitmap.get(), area.right * area.bottom * 4, pixels.data());
    LONG last = -1;
    for (LONG index = 0; index < area.right * area.bottom; ++index)
        if (pixels[static_cast<size_t>(index)] != pixels.back())
            last = std::max(last, column ? index % area.right : index / area.right);
    return last;
}

// Windows of this class cannot be made on this thread.
thread_local std::wstring refused;

LRESULT CALLBACK RefuseWindows(int code, WPARAM window, LPARAM more)
{
    if (code == HCBT_CREATEWND && Desk::ClassOf(reinterpret_cast<HWND>(window)) == refused)
        return 1;
    return CallNextHookEx(nullptr, code, window, more);
}

thread_local UINT watched = 0;
thread_local std::wstring noted;

LRESULT CALLBACK NoteMessage(int code, WPARAM current, LPARAM more)
{
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(more);
    if (sent.message == watched)
        noted += std::to_wstring(sent.wParam) + L' ' + std::to_wstring(sent.lParam) + L';';
    return CallNextHookEx(nullptr, code, current, more);
}

// A number, a window by its name, or where a text or the elements of an array lie, for the function
// to read and to fill in.
LONG_PTR WordOf(const VARIANT& given)
{
    const VARIANT& value = V_VT(&given) == (VT_BYREF | VT_VARIANT) ? *V_VARIANTREF(&given) : given;
    if (const SAFEARRAY* array = ArrayOf(value)) return reinterpret_cast<LONG_PTR>(array->pvData);
    Variant number;
    if (V_VT(&value) != VT_BSTR) {
        Check(VariantChangeType(&number, const_cast<VARIANT*>(&value), 0, VT_I4));
        return V_I4(&number);
    }
    const HWND window = V_BSTR(&value) && *V_BSTR(&value) ? WindowOf(value) : nullptr;
    return window ? HandleToLong(window) : reinterpret_cast<LONG_PTR>(V_BSTR(&value));
}

constexpr DISPID kFirstFunction = 10'000;
constexpr DWORD kSleepDeadline = 60'000; // milliseconds in which a snippet may sleep

// Runs a snippet of the pages in an engine of its own, whose WScript object also connects events.
// What it raised, with all that it printed before.
std::wstring RunSnippet(const std::wstring& name)
{
    std::wstring printed;
    const ComPtr<Members> host(new Members);
    Engine engine([&](const std::wstring&) { return ComPtr<IDispatch>(host.Get()); },
                  name.ends_with(L".js") ? L"JScript" : L"VBScript");
    engine.Add(L"WScript");
    host->Add(L"Echo", [&](std::vector<Variant> given) {
        for (const Variant& value : given)
            printed += TextOf(value) + L' ';
        printed += L"| ";
    });
    host->Add(L"Sleep", [started = GetTickCount64()](DWORD milliseconds) {
        const ULONGLONG end = GetTickCount64() + milliseconds;
        if (end > started + kSleepDeadline) Check(E_ABORT); // a loop without an end
        for (ULONGLONG now; (now = GetTickCount64()) < end;)
            WaitForMessages(static_cast<DWORD>(end - now));
    });
    host->Add(L"CreateObject", [&](std::wstring progId, std::wstring prefix) {
        const ComPtr<IDispatch> object = ObjectOf(progId);
        Listener::Of(object.Get(), [&engine, prefix](const HeardEvent& event) {
            engine.Call(prefix + event.name, event.arguments);
        });
        return Variant(object.Get());
    });
    const std::wstring path = Decode(QUILL_PAGES "/snippets/", CP_UTF8) + name;
    const ScriptError error = engine.Run(Decode(Narrowed(Contents(path)), CP_UTF8)).error;
    return error.number ? Decode(error.what(), CP_UTF8) + L", printed: " + printed : L"";
}

} // namespace

std::wstring TextOf(const VARIANT& value)
{
    Variant text;
    if (FAILED(VariantChangeType(&text, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR)))
        return L'<' + std::to_wstring(V_VT(&value)) + L'>';
    return {V_BSTR(&text) ? V_BSTR(&text) : L"", SysStringLen(V_BSTR(&text))};
}

HWND WindowOf(const VARIANT& window)
{
    const std::wstring text = TextOf(window);
    if (V_VT(&window) != VT_BSTR) return static_cast<HWND>(LongToHandle(std::stol(text)));
    const size_t bar = text.find(L'>');
    const std::wstring name = text.substr(0, bar);
    HWND top = FindWindowW(nullptr, name.c_str());
    if (!top) top = FindWindowW(name.c_str(), nullptr);
    if (!top || bar == std::wstring::npos) return top;
    const std::wstring rest = text.substr(bar + 1);
    const size_t end = rest.find_first_of(L":#");
    const bool byText = end != std::wstring::npos && rest[end] == L':';
    HWND found = nullptr;
    for (int number = end == std::wstring::npos || byText ? 1 : _wtoi(&rest[end + 1]); number > 0;
         --number)
        found = FindWindowExW(top, found, rest.substr(0, end).c_str(),
                              byText ? &rest[end + 1] : nullptr);
    return found;
}

STDMETHODIMP Members::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept
{
    for (ids[0] = 0; static_cast<size_t>(ids[0]) < members_.size(); ++ids[0])
        if (_wcsicmp(names[0], members_[ids[0]].first.c_str()) == 0) return S_OK;
    return DISP_E_UNKNOWNNAME;
}

STDMETHODIMP Members::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                             EXCEPINFO*, UINT*) noexcept
try {
    if (static_cast<size_t>(id) >= members_.size()) return DISP_E_MEMBERNOTFOUND;
    std::vector<Variant> given;
    for (UINT index = parameters->cArgs; index-- > 0;)
        given.push_back(Variant::Dereferenced(parameters->rgvarg[index]));
    Variant value = members_[id].second(given);
    if (result) *result = value.Detach();
    return S_OK;
} catch (const AutomationError& error) {
    return error.number;
} catch (const ScriptError& error) {
    return static_cast<HRESULT>(error.number);
} catch (...) {
    return E_FAIL;
}

STDMETHODIMP Host::GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID locale,
                                 DISPID* ids) noexcept
{
    if (SUCCEEDED(Members::GetIDsOfNames(id, names, count, locale, ids))) return S_OK;
    for (const wchar_t* library : {L"user32", L"kernel32", L"advapi32", L"gdi32"})
        for (const char* kind : {"W", "", "MessageW"}) { // Send is SendMessageW
            const std::string name = Narrow(*names) + kind;
            functions_.push_back(GetProcAddress(GetModuleHandleW(library), name.c_str()));
            if (functions_.back()) {
                ids[0] = kFirstFunction + static_cast<DISPID>(functions_.size()) - 1;
                return S_OK;
            }
            functions_.pop_back();
        }
    return DISP_E_UNKNOWNNAME;
}

STDMETHODIMP Host::Invoke(DISPID id, REFIID type, LCID locale, WORD flags, DISPPARAMS* parameters,
                          VARIANT* result, EXCEPINFO* error, UINT* wrong) noexcept
try {
    if (id < kFirstFunction)
        return Members::Invoke(id, type, locale, flags, parameters, result, error, wrong);
    constexpr VARTYPE kWord = sizeof(void*) == 8 ? VT_I8 : VT_I4;
    std::vector<VARTYPE> types(parameters->cArgs, kWord);
    std::vector<VARIANT> words(parameters->cArgs);
    std::vector<VARIANT*> given;
    for (UINT index = parameters->cArgs; index-- > 0;) {
        V_I8(&words[index]) = WordOf(parameters->rgvarg[index]);
        given.push_back(&words[index]);
    }
    Variant returned;
    const auto function = reinterpret_cast<ULONG_PTR>(functions_[id - kFirstFunction]);
    Check(DispCallFunc(nullptr, function, CC_STDCALL, VT_I4, parameters->cArgs, types.data(),
                       given.data(), &returned));
    if (result) *result = returned.Detach();
    return S_OK;
} catch (const AutomationError& failure) {
    return failure.number;
}

Host::Host(Script script)
{
    Add(L"folder", [this] { return folder.Path(L""); });
    Add(L"examples", [] { return Decode(QUILL_EXAMPLES "/", CP_UTF8); });
    Add(L"nul", [] { return std::wstring_view(L"\0", 1); });

    // A file's bytes as text of one character each. Writing makes its folder.
    Add(L"Write", [this](std::wstring name, std::wstring bytes) {
        create_directories(std::filesystem::path(folder.Path(name)).parent_path());
        folder.Write(name, Narrowed(bytes));
    });
    Add(L"Read", Contents);
    Add(L"Env", [](std::wstring name) { return ExpandEnvironment(L'%' + name + L'%'); });

    Add(L"Snippet", RunSnippet);

    // Hears the events of an object from now on; how many of a name came in, and the argument of
    // one. On runs a statement at each.
    Add(L"Listen", [this](IDispatch* object) { listener_ = Listener::Of(object); });
    Add(L"Heard", [this](std::wstring event) {
        return std::ranges::count(listener_->heard, event, &HeardEvent::name);
    });
    Add(L"Told", [this](std::wstring name, size_t occurrence) {
        for (const HeardEvent& event : listener_->heard)
            if (event.name == name && occurrence-- == 0)
                return Variant::Dereferenced(event.arguments.at(0));
        return Variant();
    });
    Add(L"OnEvent", [this, script](IDispatch* object, std::wstring statement) {
        reaction_ = Listener::Of(object, [=](const HeardEvent&) { script(statement); });
    });
    // What the last handler answers from now on.
    Add(L"Busy", [this](HRESULT result) { reaction_->result = result; });
    // The object's clients die, as the platform reports it.
    Add(L"Orphan", [](IDispatch* object) { LastClient(object).Die(); });

    Add(L"Exists", [](HWND window) { return IsWindow(window) != FALSE; });
    Add(L"Caption", Desk::TextOf);
    Add(L"Focus", [] { return Desk::ClassOf(GetFocus()) + L' ' + Desk::TextOf(GetFocus()); });
    Add(L"FontOf", [](HWND window) {
        const LOGFONTW font = Desk::FontOf(window);
        return font.lfFaceName + (L' ' + std::to_wstring(font.lfHeight) + L' ') +
               std::to_wstring(font.lfWeight);
    });
    Add(L"Ink", Ink);
    Add(L"Place", PlaceOf);
    Add(L"Rows", Rows);
    Add(L"Refuse", [](std::wstring windowClass) {
        static const HHOOK hook =
            SetWindowsHookExW(WH_CBT, RefuseWindows, nullptr, GetCurrentThreadId());
        refused = hook ? windowClass : L"";
    });
    // From another thread, as the shell does, to be dealt with by the next line.
    Add(L"SendAside", [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        std::thread([=] { SendMessageW(window, message, wParam, lParam); }).detach();
        const ULONGLONG end = GetTickCount64() + 30'000;
        while (!HIWORD(GetQueueStatus(QS_SENDMESSAGE)) && GetTickCount64() < end)
            Sleep(1);
    });
    // Notes messages of this number on this thread from now on; what they carried so far.
    Add(L"Watch", [](UINT message) {
        static const HHOOK hook =
            SetWindowsHookExW(WH_CALLWNDPROC, NoteMessage, nullptr, GetCurrentThreadId());
        watched = hook ? message : 0;
        return std::exchange(noted, {});
    });

    // Values that the language cannot make; the bytes of hexadecimal digits as text.
    Add(L"X", [](std::wstring digits) {
        std::wstring text;
        for (size_t index = 0; index < digits.size(); index += 2)
            text += static_cast<wchar_t>(std::stoi(digits.substr(index, 2), nullptr, 16));
        return text;
    });
    Add(L"Bytes", [](std::wstring bytes) {
        Array array = MakeArray(VT_UI1, bytes.size());
        std::ranges::copy(Narrowed(bytes), DataOf<char>(*array).begin());
        return Variant(std::move(array));
    });
    Add(L"Typed", Typed);
    Add(L"Lower", [](Variant array, LONG lower) {
        V_ARRAY(&array)->rgsabound[0].lLbound = lower;
        return array;
    });
    // What scripts take for an array: its third element is missing, and the fifth one raises.
    Add(L"Members", [](Variant length) {
        const ComPtr<Members> list(new Members);
        list->Add(L"length", [number = static_cast<VARIANT>(length)] {
            return Variant::Dereferenced(number);
        });
        for (const wchar_t* element : {L"0", L"1", L"3"})
            list->Add(element, [] { return 0; });
        list->Add(L"4", [] { Check(E_FAIL); });
        return Variant(list.Get());
    });
    Add(L"Square", [] { // two by two, where a list is asked for
        SAFEARRAYBOUND bounds[2]{{2, 0}, {2, 0}};
        return Variant(Array(SafeArrayCreate(VT_VARIANT, 2, bounds)));
    });
    Add(L"Items", Items);
    Add(L"TypeOf", [](Variant value) { return V_VT(&value); });
    // Calls a method with a variable of this type, as typed languages pass it, in the place of the
    // Empty among the arguments; gives what the variable holds then.
    Add(L"Into", [](IDispatch* object, std::wstring method, VARTYPE type, Variant arguments) {
        Variant variable =
            type & VT_ARRAY ? Variant(MakeArray(type & VT_TYPEMASK, 2)) : OfType(type);
        std::vector<Variant> passed = ElementsOf(*ArrayOf(arguments), SIZE_MAX);
        for (Variant& argument : passed)
            if (V_VT(&argument) == VT_EMPTY) argument = Reference(type, &V_I4(&variable));
        test::Invoke(object, method.c_str(), passed);
        return variable;
    });
    // What these properties of an object are: its state.
    Add(L"Shot", [](IDispatch* object, std::wstring names) {
        std::wstring shot;
        std::wistringstream rest(names);
        for (std::wstring name; rest >> name;)
            shot += name + L'=' + TextOf(test::Invoke(object, name.c_str())) + L' ';
        return shot;
    });

    // The program `client` with a script; whether it has done the first part, what it ended with,
    // 259 before that.
    Add(L"Launch", [this](std::wstring text) {
        clients_.emplace_back(text);
        return clients_.size() - 1;
    });
    Add(L"Ready", [this](size_t client) { return clients_.at(client).Ready(); });
    Add(L"ExitOf", [this](size_t client) { return clients_.at(client).Wait(0); });
    Add(L"Kill", [this](size_t client) { clients_.at(client).Kill(); });
    // Tells or asks all windows of the server, as the system does; whether all agree. What it ended
    // with then.
    Add(L"Session", [this](UINT message, WPARAM wParam) {
        DWORD server = 0;
        GetWindowThreadProcessId(FindWindowW(L"quill.Server", nullptr), &server);
        server_.reset(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, server));
        bool agreed = true;
        for (const HWND window : Listed(nullptr)) {
            DWORD owner = 0;
            DWORD_PTR answer = TRUE;
            GetWindowThreadProcessId(window, &owner);
            if (owner == server)
                SendMessageTimeoutW(window, message, wParam, 0, SMTO_NORMAL, 10'000, &answer);
            agreed = agreed && answer;
        }
        return agreed;
    });
    Add(L"ServerCode", [this] { return ExitCode(server_, 10'000); });
    Add(L"ThreadOf", [](HWND window) { return GetWindowThreadProcessId(window, nullptr); });
}

} // namespace quill::test
