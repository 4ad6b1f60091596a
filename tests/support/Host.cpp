#include "support/Host.h"

#include <commctrl.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <thread>

#include "core/Paths.h"
#include "core/Text.h"
#include "support/LateBound.h"
#include "support/Robot.h"

namespace quill::test {

namespace {

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

// Runs an example in the platform's script host, with `folder` as TEMP. Its last lines, with bars
// between them.
std::wstring RunExample(const TemporaryFolder& folder, const std::wstring& name,
                        const std::wstring& arguments, size_t wanted)
{
    auto script = std::filesystem::path(QUILL_EXAMPLES) / name;
    const std::wstring printed = folder.Path(L"printed");
    const std::wstring run = L"cscript.exe //nologo \"" + script.make_preferred().wstring() +
                             L"\" " + arguments + L" > \"" + printed + L'"';
    SetEnvironmentVariableW(L"TEMP", folder.Path().c_str());
    if (const int code = _wsystem(run.c_str())) return L"exit code " + std::to_wstring(code);
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
std::pair<HKEY, std::wstring> KeyOf(const std::wstring& path)
{
    const size_t separator = path.find(L'\\');
    return {path.starts_with(L"HKCR") ? HKEY_CLASSES_ROOT : HKEY_CURRENT_USER,
            path.substr(separator + 1)};
}

// Texts are stored as they are, with or without a NUL; of other types, one byte a character.
void SetRegistry(const std::wstring& path, const std::wstring& name, LONG type,
                 const std::wstring& text)
{
    const auto [root, below] = KeyOf(path);
    const std::wstring wide = text + L'x'; // no NUL behind it, which the platform would store
    const std::string bytes = Narrowed(text);
    const bool isText = type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
    CheckWin32(RegSetKeyValueW(root, below.c_str(), name.c_str(), static_cast<DWORD>(type),
                               isText ? static_cast<const void*>(wide.data()) : bytes.data(),
                               static_cast<DWORD>(isText ? 2 * text.size() : bytes.size())));
}

// Left, top, width and height in the frame of its top-level window.
std::wstring PlaceIn(HWND window)
{
    const RECT frame = Desk::PlaceOf(GetAncestor(window, GA_ROOT));
    const RECT place = Desk::PlaceOf(window);
    std::wostringstream text;
    text << place.left - frame.left << ' ' << place.top - frame.top << ' '
         << place.right - place.left << ' ' << place.bottom - place.top;
    return text.str();
}

// The cells that a list view shows, with commas between them, and a bar behind each row.
std::wstring Rows(HWND view)
{
    const auto header = reinterpret_cast<HWND>(SendMessageW(view, LVM_GETHEADER, 0, 0));
    const LRESULT columns = SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
    const LRESULT rows = SendMessageW(view, LVM_GETITEMCOUNT, 0, 0);
    std::wstring text;
    for (int cell = 0; cell < rows * columns; ++cell) {
        wchar_t shown[300] = L"";
        const int column = static_cast<int>(cell % columns);
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = shown;
        item.cchTextMax = 300;
        SendMessageW(view, LVM_GETITEMTEXTW, static_cast<WPARAM>(cell / columns),
                     reinterpret_cast<LPARAM>(&item));
        text += shown + std::wstring(column + 1 < columns ? L"," : L"|");
    }
    return text;
}

// An array to scripts, of numbers from 0 on; number 2 is missing, number 4 raises.
class ArrayLike final : public CountedDispatch {
public:
    explicit ArrayLike(Variant length) : length_(std::move(length)) {}
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override
    {
        *ids = *names[0] == L'l' ? -10 : _wtoi(names[0]);
        return *ids == 2 ? DISP_E_UNKNOWNNAME : S_OK;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                        UINT*) noexcept override
    {
        *result = (id < 0 ? Variant::Dereferenced(length_) : Variant(LONG{id})).Detach();
        return id == 4 ? DISP_E_EXCEPTION : S_OK;
    }

private:
    const Variant length_;
};

// A control as it is drawn on the screen, row by row.
std::vector<DWORD> PixelsOf(HWND control)
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
    return pixels;
}

// The lowest row, or the last column, with something drawn; -1 when the control is empty.
LONG Ink(HWND control, bool column)
{
    RECT area{};
    GetClientRect(control, &area);
    const std::vector<DWORD> pixels = PixelsOf(control);
    LONG last = -1;
    for (LONG index = 0; index < area.right * area.bottom; ++index)
        if (pixels[static_cast<size_t>(index)] != pixels.back())
            last = std::max(last, column ? index % area.right : index / area.right);
    return last;
}

// A number that differs where something else is drawn.
size_t Picture(HWND control)
{
    const std::vector<DWORD> pixels = PixelsOf(control);
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(pixels.data()), pixels.size() * sizeof pixels[0]});
}

// A click on the icon in the notification area: on the taskbar, or in the tray that Wine shows
// where there is none.
void ClickTray(bool right)
{
    Robot([=](Desk& desk) {
        const auto button = right ? Desk::Button::Right : Desk::Button::Left;
        const HWND taskbar = FindWindowW(L"Shell_TrayWnd", nullptr);
        RECT client{};
        GetClientRect(taskbar, &client);
        if (IsWindowVisible(taskbar))
            desk.ClickAt(taskbar, {client.right - 10, client.bottom / 2}, button);
        else
            desk.Click(desk.Control(L"Wine System Tray", L"__winex11_tray_icon"), button);
    }).Finish();
}

// How many icons of all Notices a request of the shell succeeds for.
int TrayIcons(DWORD request)
{
    static std::map<HWND, UINT> numbers; // of the windows that were seen to have an icon
    int icons = 0;
    NOTIFYICONDATAW record{};
    record.cbSize = sizeof record;
    while ((record.hWnd = FindWindowExW(nullptr, record.hWnd, L"frmNoteMsg", nullptr))) {
        const auto known = numbers.find(record.hWnd);
        record.uID = known == numbers.end() ? 0 : known->second;
        const UINT last = known == numbers.end() ? 999 : known->second;
        while (!Shell_NotifyIconW(request, &record) && record.uID <= last)
            ++record.uID;
        if (record.uID > last) continue;
        numbers[record.hWnd] = record.uID;
        ++icons;
    }
    return icons;
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

Host::Host(Script script)
{
    Add(L"folder", [this] { return folder.Path(L""); });
    Add(L"nul", [] { return std::wstring_view(L"\0", 1); });

    // A file's bytes as text of one character each. Writing makes its folder.
    Add(L"Write", [this](std::wstring name, std::wstring bytes) {
        create_directories(std::filesystem::path(folder.Path(name)).parent_path());
        folder.Write(name, Narrowed(bytes));
    });
    Add(L"Read", Contents);
    Add(L"Delete", [](std::wstring path) { return DeleteFileW(path.c_str()) != FALSE; });
    // Makes a folder the current one; which one was before.
    Add(L"Enter", [](std::wstring path) {
        const std::wstring before = CurrentFolder();
        SetCurrentDirectoryW(path.c_str());
        return before;
    });
    Add(L"Env", [](std::wstring name) { return ExpandEnvironment(L'%' + name + L'%'); });
    Add(L"Run", [this](std::wstring name, std::wstring arguments, size_t lines) {
        return RunExample(folder, name, arguments, lines);
    });

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

    // Windows. Previous is in the order of the tab key.
    Add(L"HandleOf", [](HWND window) { return HandleToLong(window); });
    Add(L"ClassAt", [](LONG x, LONG y) { return Desk::ClassOf(WindowFromPoint({x, y})); });
    Add(L"ClickTray", ClickTray);
    Add(L"TrayIcons", TrayIcons);
    Add(L"LowestInk", [](HWND control) { return Ink(control, false); });
    Add(L"LastInk", [](HWND control) { return Ink(control, true); });
    Add(L"Picture", Picture);
    Add(L"Focused", [] { return Desk::ClassOf(GetFocus()); });
    // Notes messages of this number on this thread from now on; what they carried so far.
    Add(L"Watch", [](UINT message) {
        static const HHOOK hook =
            SetWindowsHookExW(WH_CALLWNDPROC, NoteMessage, nullptr, GetCurrentThreadId());
        watched = hook ? message : 0;
        return std::exchange(noted, {});
    });
    Add(L"MenuText", [](HWND menu, UINT index) {
        wchar_t text[256]{};
        const LRESULT handle = SendMessageW(menu, MN_GETHMENU, 0, 0);
        GetMenuStringW(reinterpret_cast<HMENU>(handle), index, text, 256, MF_BYPOSITION);
        const UINT state = GetMenuState(reinterpret_cast<HMENU>(handle), index, MF_BYPOSITION);
        return (state != UINT(-1) && state & MF_CHECKED ? L"*" : L"") + std::wstring(text);
    });
    Add(L"Place", PlaceIn);
    // How far a window's edges together are off from those of the room for windows.
    Add(L"FromCentre", [](HWND window) {
        RECT area{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
        const RECT place = Desk::PlaceOf(window);
        return std::to_wstring(place.left + place.right - area.left - area.right) + L' ' +
               std::to_wstring(place.top + place.bottom - area.top - area.bottom);
    });
    // The places of a window's visible controls, in the order of the tab key.
    Add(L"Layout", [](HWND window) {
        std::wstring text;
        for (HWND each = GetWindow(window, GW_CHILD); each; each = GetWindow(each, GW_HWNDNEXT))
            if (IsWindowVisible(each)) text += Desk::ClassOf(each) + L' ' + PlaceIn(each) + L'|';
        return text;
    });
    // Says to a window that its screen has this resolution now.
    Add(L"Rescale", [](HWND window, int resolution) {
        RECT place = Desk::PlaceOf(window);
        place.right = place.left + MulDiv(place.right - place.left, resolution, 96);
        place.bottom = place.top + MulDiv(place.bottom - place.top, resolution, 96);
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(resolution, resolution),
                     reinterpret_cast<LPARAM>(&place));
    });
    Add(L"Rows", Rows);
    Add(L"Arrow", [](HWND view, WPARAM column) { // of a heading
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(reinterpret_cast<HWND>(SendMessageW(view, LVM_GETHEADER, 0, 0)), HDM_GETITEMW,
                     column, reinterpret_cast<LPARAM>(&item));
        return std::wstring(item.fmt & HDF_SORTUP ? L"up" : L"") +
               (item.fmt & HDF_SORTDOWN ? L"down" : L"");
    });
    // Tells the window of a control what the control would.
    Add(L"Notify", [](HWND control, UINT code) {
        NMHDR notification{control, 0, code};
        SendMessageW(GetParent(control), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    });
    Add(L"ColorOf", [](HWND control) { // of the text
        const HDC device = GetDC(control);
        const bool edit = Desk::ClassOf(control) == WC_EDITW;
        SendMessageW(GetParent(control), edit ? WM_CTLCOLOREDIT : WM_CTLCOLORSTATIC,
                     reinterpret_cast<WPARAM>(device), reinterpret_cast<LPARAM>(control));
        const COLORREF color = GetTextColor(device);
        ReleaseDC(control, device);
        return color;
    });
    Add(L"Refuse", [](std::wstring windowClass) {
        static const HHOOK hook =
            SetWindowsHookExW(WH_CBT, RefuseWindows, nullptr, GetCurrentThreadId());
        refused = hook ? windowClass : L"";
    });
    Add(L"Post", [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        return PostMessageW(window, message, wParam, lParam);
    });
    // From another thread, as the shell does, to be dealt with by the next line; Replied: within
    // such a message, whether its sender goes on.
    Add(L"SendAside", [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        std::thread([=] { SendMessageW(window, message, wParam, lParam); }).detach();
        const ULONGLONG end = GetTickCount64() + 5'000;
        while (!(HIWORD(GetQueueStatus(QS_SENDMESSAGE))) && GetTickCount64() < end)
            Sleep(1);
    });
    Add(L"Replied", [] { return InSendMessageEx(nullptr) == (ISMEX_SEND | ISMEX_REPLIED); });
    Add(L"Exists", [](HWND window) { return IsWindow(window) != FALSE; });
    Add(L"Send", [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        return SendMessageW(window, message, wParam, lParam);
    });
    Add(L"Message", [](std::wstring name) { return RegisterWindowMessageW(name.c_str()); });
    Add(L"Caption", Desk::TextOf);
    Add(L"Focus", [] { return Desk::ClassOf(GetFocus()) + L' ' + Desk::TextOf(GetFocus()); });
    Add(L"Front", [] { return Desk::TextOf(GetForegroundWindow()); });
    Add(L"Previous", [](HWND window) { return Desk::TextOf(GetWindow(window, GW_HWNDPREV)); });
    Add(L"Size", [](HWND window) {
        const SIZE size = Desk::SizeOf(window);
        return std::to_wstring(size.cx) + L'x' + std::to_wstring(size.cy);
    });
    Add(L"Resize", [](HWND window, int width, int height) {
        SetWindowPos(window, nullptr, 0, 0, width, height,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    });
    Add(L"Style", [](HWND window) { return GetWindowLongW(window, GWL_STYLE); });
    Add(L"IsTopmost",
        [](HWND window) { return (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0; });
    Add(L"FontOf", [](HWND window) {
        const LOGFONTW font = Desk::FontOf(window);
        return font.lfFaceName + (L' ' + std::to_wstring(font.lfHeight) + L' ') +
               std::to_wstring(font.lfWeight);
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
    Add(L"Members", [](Variant length) {
        return Variant(ComPtr<IDispatch>(new ArrayLike(std::move(length))).Get());
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

    // What the platform refuses: an event takes the place of a file's handle, another window has
    // the clipboard for so many milliseconds.
    Add(L"Spoil", [](LONG number) {
        CloseHandle(LongToHandle(number));
        return CreateEventW(nullptr, FALSE, FALSE, nullptr) == LongToHandle(number);
    });
    Add(L"HoldClipboard", [](UINT milliseconds) {
        SetTimer(nullptr, 0, milliseconds, [](HWND, UINT, UINT_PTR timer, DWORD) WINAPI {
            KillTimer(nullptr, timer);
            CloseClipboard();
        });
        return OpenClipboard(GetDesktopWindow()) != FALSE;
    });
    // What other programs see there: the formats and their sizes.
    Add(L"Formats", [] {
        std::wstring text = GetClipboardOwner() ? L"owned " : L"";
        OpenClipboard(nullptr);
        for (UINT format = 0; (format = EnumClipboardFormats(format)) != 0;)
            text += std::to_wstring(format) + L':' +
                    std::to_wstring(GlobalSize(GetClipboardData(format))) + L' ';
        CloseClipboard();
        return text;
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

    Add(L"RegMake", [](std::wstring path) {
        const auto [root, below] = KeyOf(path);
        RegistryKey key;
        RegCreateKeyW(root, below.c_str(), Into(key));
    });
    Add(L"RegSet", SetRegistry);
    Add(L"RegDelete", [](std::wstring path) {
        const auto [root, below] = KeyOf(path);
        RegDeleteTreeW(root, below.c_str());
    });
}

} // namespace quill::test
