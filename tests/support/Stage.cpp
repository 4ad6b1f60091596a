#include "support/Stage.h"

#include <commctrl.h>

#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/Registration.h"
#include "dialogs/FileDialog.h"
#include "dialogs/FolderDialog.h"
#include "dialogs/MessageBox.h"
#include "dialogs/TaskDialog.h"
#include "dialogs/frmDrives.h"
#include "gui/AnswerTime.h"
#include "gui/windowfn.h"
#include "services/Logging.h"
#include "support/CountedDispatch.h"
#include "support/LateBound.h"
#include "sysinfo/Me.h"
#include "sysinfo/Noise.h"
#include "sysinfo/System.h"
#include "tray/IconSource.h"
#include "tray/notify.h"
#include "windows/ProgressDialog.h"
#include "windows/ProgressWindow.h"

namespace quill::test {

namespace {

std::mutex mutex; // sounds come from threads of their own
std::wstring told;
std::map<std::wstring, std::vector<LONG>> answers;

LONG AnswerOf(const std::wstring& name, LONG usual)
{
    const std::lock_guard guard(mutex);
    const auto found = answers.find(name);
    if (found == answers.end()) return usual;
    const LONG answer = found->second.front();
    if (found->second.size() > 1) found->second.erase(found->second.begin());
    return answer;
}

std::wstring Part(const std::wstring& text)
{
    return text;
}
// A long one is cut, and ends in its length.
std::wstring Part(const wchar_t* given)
{
    const std::wstring text(given);
    return text.size() <= 60 ? text : text.substr(0, 5) + L"..." + std::to_wstring(text.size());
}
std::wstring Part(std::integral auto number)
{
    return std::to_wstring(number);
}

// name=text; a null is nothing, an empty text is one.
std::wstring Named(const wchar_t* name, const wchar_t* text)
{
    return text ? name + (L'=' + Part(text)) : L"";
}

const wchar_t* OrNull(const wchar_t* text)
{
    return *text ? text : nullptr;
}

std::wstring Hex(ULONG number)
{
    std::wostringstream text;
    text << std::hex << number;
    return text.str();
}

std::wstring Icon(const wchar_t* name, PCWSTR icon)
{
    if (IS_INTRESOURCE(icon))
        return icon ? name + (L"=#" + std::to_wstring(reinterpret_cast<ULONG_PTR>(icon))) : L"";
    return Named(name, icon);
}

template <class... Parts>
HRESULT Tell(const Parts&... parts)
{
    std::wstring call;
    const auto add = [&](const std::wstring& part) {
        if (!part.empty()) call += (call.empty() ? L"" : L" ") + part;
    };
    (add(Part(parts)), ...);
    const std::lock_guard guard(mutex);
    told += (told.empty() ? L"" : L"; ") + call;
    return S_OK;
}

// One that usually succeeds.
template <class... Parts>
BOOL Granted(const wchar_t* name, const Parts&... parts)
{
    Tell(name, parts...);
    return AnswerOf(name, TRUE);
}

int ShowBox(const MSGBOXPARAMSW* box)
{
    Tell(L"box", Hex(box->dwStyle), Icon(L"icon", box->lpszIcon), box->hInstance ? L"module" : L"",
         box->dwLanguageId ? Hex(box->dwLanguageId) : L"",
         box->cbSize == 40 && !box->hwndOwner ? L"" : L"wrong",
         Part(box->lpszCaption) + L": " + Part(box->lpszText));
    return AnswerOf(L"box", IDYES);
}

HRESULT ShowTask(HWND, HINSTANCE, PCWSTR title, PCWSTR instruction, PCWSTR content, int buttons,
                 PCWSTR icon, int* pressed)
{
    Tell(L"task", buttons, Icon(L"icon", icon), Named(L"title", title), Named(L"main", instruction),
         Named(L"content", content));
    *pressed = AnswerOf(L"pressed", IDOK);
    return AnswerOf(L"task", S_OK);
}

std::wstring Captions(const wchar_t* name, UINT count, const TASKDIALOG_BUTTON* buttons)
{
    std::wstring captions;
    for (UINT index = 0; index < count; ++index)
        captions += (index ? L"," : name + std::wstring(L"=")) +
                    std::to_wstring(buttons[index].nButtonID) + buttons[index].pszButtonText;
    return captions;
}

HRESULT ShowTaskEx(const TASKDIALOGCONFIG* config, int* pressed, int* radio, BOOL* checked)
{
    Tell(L"task", Hex(config->dwFlags), config->dwCommonButtons, Icon(L"icon", config->pszMainIcon),
         Icon(L"footericon", config->pszFooterIcon), config->hInstance ? L"module" : L"",
         Named(L"title", config->pszWindowTitle), Named(L"main", config->pszMainInstruction),
         Named(L"content", config->pszContent),
         Captions(L"buttons", config->cButtons, config->pButtons), config->nDefaultButton,
         Captions(L"radio", config->cRadioButtons, config->pRadioButtons),
         config->nDefaultRadioButton, Named(L"check", config->pszVerificationText),
         Named(L"more", config->pszExpandedInformation),
         Named(L"less", config->pszExpandedControlText),
         Named(L"expand", config->pszCollapsedControlText), Named(L"footer", config->pszFooter));
    *pressed = AnswerOf(L"pressed", IDOK);
    *radio = 2;
    *checked = TRUE;
    return AnswerOf(L"task", S_OK);
}

std::wstring WidthOf(const wchar_t* name, HICON icon)
{
    ICONINFO info{};
    BITMAP bitmap{};
    if (!icon || !GetIconInfo(icon, &info)) return {};
    GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
    return name + std::to_wstring(bitmap.bmWidth);
}

BOOL NotifyIcon(DWORD request, NOTIFYICONDATAW* record)
{
    static const wchar_t* const names[] = {L"add", L"modify", L"delete", L"focus", L"version"};
    const std::wstring balloon =
        Hex(record->dwInfoFlags) + L' ' + Part(record->szInfoTitle) + L": " + Part(record->szInfo);
    return Granted(names[request], record->uFlags ? Hex(record->uFlags) : L"",
                   record->uVersion ? std::to_wstring(record->uVersion) : L"",
                   record->cbSize == 956 ? L"" : std::to_wstring(record->cbSize),
                   request == NIM_ADD && record->uCallbackMessage != kTrayCallback ? L"wrong" : L"",
                   WidthOf(L"icon=", record->hIcon), Named(L"tip", OrNull(record->szTip)),
                   record->uFlags & NIF_INFO ? balloon : L"",
                   WidthOf(L"balloon=", record->hBalloonIcon));
}

HRESULT LoadStock(int id, UINT flags, SHSTOCKICONINFO* info)
{
    Tell(L"stock", id, Hex(flags), info->cbSize == 536 ? L"" : L"wrong");
    info->hIcon = CopyIcon(LoadIconW(nullptr, IDI_APPLICATION));
    return S_OK;
}

BOOL ShowFiles(OPENFILENAMEW* dialog, bool save)
{
    std::wstring filter;
    for (const wchar_t* entry = dialog->lpstrFilter; entry && *entry; entry += wcslen(entry) + 1)
        filter += (filter.empty() ? L"" : L",") + std::wstring(entry);
    Tell(save ? L"save" : L"open",
         dialog->Flags & OFN_ALLOWMULTISELECT ? std::to_wstring(dialog->nMaxFile) : L"",
         Named(L"file", OrNull(dialog->lpstrFile)), Named(L"in", dialog->lpstrInitialDir),
         Named(L"extension", dialog->lpstrDefExt), Named(L"title", dialog->lpstrTitle),
         Named(L"filter", dialog->lpstrFilter ? filter.c_str() : nullptr));
    SetCurrentDirectoryW(L"C:\\windows"); // as the platform's own does
    if (!AnswerOf(L"files", FALSE)) return FALSE;
    wcscpy(dialog->lpstrFile, L"D:\\long enough.txt");
    return TRUE;
}

std::wstring ShowFolders(const FolderRequest& request)
{
    if (!AnswerOf(L"folders", TRUE)) return FolderDialogs().show(request);
    Tell(L"folder", Named(L"in", request.start.c_str()));
    return L"C:\\new";
}

// What controls of this thread are sent: keys, and the balloons of fields, of which Wine shows
// none.
LRESULT CALLBACK TellMessage(int code, WPARAM wParam, LPARAM lParam)
{
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && sent.message == WM_KEYDOWN) Tell(L"key", sent.wParam);
    if (code == HC_ACTION && sent.message == EM_SHOWBALLOONTIP) {
        const auto& tip = *reinterpret_cast<const EDITBALLOONTIP*>(sent.lParam);
        Tell(L"balloon", tip.ttiIcon, Named(L"title", tip.pszTitle), Named(L"text", tip.pszText),
             tip.cbStruct == 16 ? L"" : L"wrong");
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

HHOOK messages;

void HearMessages()
{
    messages = SetWindowsHookExW(WH_CALLWNDPROC, TellMessage, nullptr, GetCurrentThreadId());
}

// Wine's taskbar shows nothing.
class RecordingTaskbar final : public Counted<ITaskbarList3> {
public:
    STDMETHODIMP HrInit() override { return Add(nullptr, L"init"); }
    STDMETHODIMP SetProgressValue(HWND window, ULONGLONG done, ULONGLONG total) override
    {
        return Add(window, L"value", done, total);
    }
    STDMETHODIMP SetProgressState(HWND window, TBPFLAG state) override
    {
        return Add(window, L"state", static_cast<int>(state));
    }
    STDMETHODIMP AddTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP ActivateTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP SetActiveAlt(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP MarkFullscreenWindow(HWND, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP RegisterTab(HWND, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP SetTabOrder(HWND, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP SetTabActive(HWND, HWND, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP ThumbBarAddButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    STDMETHODIMP ThumbBarUpdateButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    STDMETHODIMP ThumbBarSetImageList(HWND, HIMAGELIST) override { return E_NOTIMPL; }
    STDMETHODIMP SetOverlayIcon(HWND, HICON, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP SetThumbnailTooltip(HWND, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP SetThumbnailClip(HWND, RECT*) override { return E_NOTIMPL; }

private:
    template <class... Parts>
    static HRESULT Add(HWND window, const Parts&... parts)
    {
        Tell(parts..., !window || IsWindow(window) ? L"" : L"elsewhere");
        return window == INVALID_HANDLE_VALUE ? E_INVALIDARG : S_OK;
    }
};

constexpr auto MakeTaskbar = [] { return ComPtr<ITaskbarList3>(new RecordingTaskbar); };

// Wine's dialog shows no third line and keeps no time.
class RecordingDialog final : public Counted<IProgressDialog> {
public:
    STDMETHODIMP StartProgressDialog(HWND parent, IUnknown*, DWORD flags, LPCVOID) override
    {
        return Tell(L"start", flags, parent ? L"modal" : L"");
    }
    STDMETHODIMP StopProgressDialog() override { return Tell(L"stop"); }
    STDMETHODIMP SetTitle(PCWSTR title) override
    {
        return Tell(L"title", title), AnswerOf(L"title", S_OK);
    }
    STDMETHODIMP SetAnimation(HINSTANCE, UINT) override { return E_NOTIMPL; }
    STDMETHODIMP_(WINBOOL) HasUserCancelled() override { return AnswerOf(L"cancelled", 0); }
    STDMETHODIMP SetProgress(DWORD done, DWORD total) override { return Tell(done, L"of", total); }
    STDMETHODIMP SetProgress64(ULONGLONG done, ULONGLONG total) override
    {
        return Tell(done, L"of64", total);
    }
    STDMETHODIMP SetLine(DWORD line, PCWSTR text, WINBOOL compact, LPCVOID) override
    {
        return Tell(L"line", line, text, compact ? L"compact" : L"");
    }
    STDMETHODIMP SetCancelMsg(PCWSTR text, LPCVOID) override { return Tell(L"cancel", text); }
    STDMETHODIMP Timer(DWORD action, LPCVOID) override { return Tell(L"timer", action), E_FAIL; }
};

constexpr auto MakeDialog = [] { return ComPtr<IProgressDialog>(new RecordingDialog); };

// As the event viewer shows it.
BOOL WINAPI ReportEvent(HANDLE, WORD type, WORD category, DWORD id, PSID, WORD count, DWORD,
                        LPCWSTR* texts, void*)
{
    SetLastError(static_cast<DWORD>(AnswerOf(L"event", ERROR_SUCCESS)));
    if (GetLastError() != ERROR_SUCCESS) return FALSE;
    std::wstring shown(32'000, L'\0');
    shown.resize(FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                                GetModuleHandleW(nullptr), id, 0, shown.data(), 32'000,
                                reinterpret_cast<va_list*>(const_cast<wchar_t**>(texts))));
    Tell(L"event", type, category == 0 && count == 1 ? L"" : L"wrong",
         shown.substr(0, shown.rfind(L"\r\n")).c_str());
    return TRUE;
}

DWORD WINAPI JoinInformation(LPCWSTR, LPWSTR* name, NETSETUP_JOIN_STATUS* type)
{
    Tell(L"join");
    *type = NetSetupDomainName;
    const auto result = static_cast<DWORD>(AnswerOf(L"join", NERR_Success));
    if (result == NERR_Success) *name = _wcsdup(L"EXAMPLE");
    return result;
}

DWORD WINAPI FreeBuffer(void* buffer)
{
    Tell(L"free");
    free(buffer);
    return NERR_Success;
}

BOOL WINAPI FirmwareType(FIRMWARE_TYPE* type)
{
    const LONG answer = AnswerOf(L"firmware", FirmwareTypeBios);
    *type = static_cast<FIRMWARE_TYPE>(answer);
    return answer >= 0;
}

DWORD WINAPI FirmwareVariable(LPCWSTR, LPCWSTR, void*, DWORD)
{
    SetLastError(static_cast<DWORD>(AnswerOf(L"variable", ERROR_INVALID_FUNCTION)));
    return 0;
}

// Wine always grants the foreground.
constexpr auto Front = [] {
    return AnswerOf(L"front", 0) ? GetForegroundWindow() : GetDesktopWindow();
};
constexpr auto SetFront = [](HWND window) {
    Tell(L"front");
    return BOOL{AnswerOf(L"foreground", TRUE) && SetForegroundWindow(window)};
};
constexpr auto AllowFront = [](DWORD process) { return Granted(L"allow", int(process)); };
constexpr auto Flash = [](FLASHWINFO* info) {
    return Granted(L"flash", Hex(info->dwFlags), info->uCount, info->dwTimeout ? L"wrong" : L"");
};
constexpr auto Alert = [](UINT type) { return Granted(L"beep", Hex(type)); };

// A sound lasts as long as the answer says so. Whoever waits for one that does not end is found
// out.
BOOL Sound()
{
    const ULONGLONG end = GetTickCount64() + 5'000;
    while (AnswerOf(L"sound", 0) && GetTickCount64() <= end)
        Sleep(5);
    if (GetTickCount64() > end) Tell(L"waits too long");
    return TRUE;
}

BOOL WINAPI Ring(DWORD frequency, DWORD milliseconds)
{
    Tell(L"tone", frequency, milliseconds);
    return Sound();
}

BOOL WINAPI Play(LPCWSTR sound, HMODULE module, DWORD flags)
{
    const bool own = module == GetModuleHandleW(nullptr);
    Tell(L"play", sound ? sound : L"null", Hex(flags), own ? L"own" : module ? L"module" : L"");
    return Sound();
}

constexpr auto Beep = [](UINT type) WINAPI { return Granted(L"beep", int(type)); };

HRESULT WINAPI CallerThread(DWORD* thread)
{
    *thread = 4711;
    return AnswerOf(L"caller", S_FALSE);
}

// One is known, the others answer late.
std::wstring NameOf(const std::wstring& drive)
{
    if (drive == L"C:") return L"Work";
    while (AnswerOf(L"drives", 0))
        Sleep(5);
    return L"late";
}

constexpr auto NoStation = []() WINAPI -> HWINSTA { return nullptr; };

std::vector<void (*)()> restores;

// Functions in place of the platform's.
template <class Seams, auto... functions>
void Put()
{
    Seam<Seams>() = {functions...};
    restores.push_back([] { Seam<Seams>() = {}; });
}

const std::map<std::wstring, void (*)()> kSeams{
    {L"box", Put<MessageBoxFunctions, ShowBox>},
    {L"caller", Put<CallerFunctions, CallerThread>},
    {L"drives", Put<DriveFunctions, NameOf>},
    {L"event", Put<EventLogFunctions, ReportEvent>},
    {L"files", Put<FileDialogs, ShowFiles>},
    {L"folders", Put<FolderDialogs, ShowFolders>},
    {L"messages", HearMessages},
    {L"foreground", Put<Foreground, Front, SetFront, AllowFront, Flash, Alert>},
    {L"machine",
     Put<MachineFunctions, JoinInformation, FreeBuffer, FirmwareType, FirmwareVariable>},
    {L"nomachine", Put<MachineFunctions, nullptr, nullptr, nullptr, nullptr>},
    {L"nostation", Put<StationFunctions, NoStation>},
    {L"notask", Put<TaskDialogFunctions, nullptr, nullptr>},
    {L"shell", Put<ShellDialogs, MakeDialog>},
    {L"sound", Put<SoundFunctions, Ring, Beep, Play>},
    {L"stock", Put<IconFunctions, LoadStock>},
    {L"task", Put<TaskDialogFunctions, ShowTask, ShowTaskEx>},
    {L"taskbar", Put<Taskbars, MakeTaskbar>},
    {L"tray", Put<NotifyIconFunctions, NotifyIcon>},
};

} // namespace

Stage::~Stage()
{
    for (const auto restore : std::exchange(restores, {}))
        restore();
    Seam<AnswerSecond>() = {};
    UnhookWindowsHookEx(std::exchange(messages, nullptr));
    ThisApartment().osVersion = QueryOsVersion();
    answers.clear();
    Told();
}

std::vector<std::wstring> Stage::Classes()
{
    std::vector<std::wstring> names;
    for (const CatalogueRow& row : kCatalogue)
        names.emplace_back(row.name);
    return names;
}

ComPtr<IDispatch> Stage::Make(std::wstring_view className)
{
    for (const CatalogueRow& row : kCatalogue) {
        if (className != row.name) continue;
        ComPtr<IDispatch> object;
        Check(CreateHere(row, IID_PPV_ARGS(&object)));
        return object;
    }
    throw std::logic_error("no class " + Narrow(className));
}

void Stage::Register(bool currentUser, const std::wstring& program)
{
    RegisterServer(currentUser ? RegistrationScope::CurrentUser : RegistrationScope::AllUsers,
                   program);
}

void Stage::Unregister(const std::wstring& program)
{
    UnregisterServer(program);
}

void Stage::Record(const std::wstring& name)
{
    const auto seam = kSeams.find(name);
    if (seam == kSeams.end()) throw std::logic_error("no seam " + Narrow(name));
    seam->second();
}

void Stage::Answer(const std::wstring& name, const std::wstring& numbers)
{
    std::wistringstream text(numbers);
    std::vector<LONG> values;
    for (LONG value; text >> value;)
        values.push_back(value);
    if (values.empty()) throw std::logic_error("no answer " + Narrow(name));
    if (name == L"version") ThisApartment().osVersion = values[0];
    if (name == L"second") Seam<AnswerSecond>().milliseconds = static_cast<DWORD>(values[0]);
    const std::lock_guard guard(mutex);
    answers[name] = values;
}

std::wstring Stage::Told()
{
    const std::lock_guard guard(mutex);
    return std::exchange(told, {});
}

} // namespace quill::test
