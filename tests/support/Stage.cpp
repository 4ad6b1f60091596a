#include "support/Stage.h"

#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/Registration.h"
#include "dialogs/FileDialog.h"
#include "dialogs/MessageBox.h"
#include "dialogs/TaskDialog.h"
#include "dialogs/frmDrives.h"
#include "gui/AnswerTime.h"
#include "gui/windowfn.h"
#include "services/Logging.h"
#include "support/CountedDispatch.h"
#include "support/ScriptObject.h"
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
    constexpr size_t kLongest = 60;
    return text.size() <= kLongest ? text
                                   : text.substr(0, 5) + L"..." + std::to_wstring(text.size());
}
template <class Number>
requires std::integral<Number> std::wstring Part(Number number)
{
    return std::to_wstring(number);
}

// A null is nothing, an empty text is one.
std::wstring Named(const wchar_t* name, const wchar_t* text)
{
    return text ? std::wstring(name) + L'=' + Part(std::wstring(text)) : L"";
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
void Tell(const Parts&... parts)
{
    std::wstring call;
    const auto add = [&](const std::wstring& part) {
        if (!part.empty()) call += (call.empty() ? L"" : L" ") + part;
    };
    (add(Part(parts)), ...);
    const std::lock_guard guard(mutex);
    told += (told.empty() ? L"" : L"; ") + call;
}

int ShowBox(const MSGBOXPARAMSW* box)
{
    Tell(L"box", Hex(box->dwStyle), Icon(L"icon", box->lpszIcon), box->hInstance ? L"module" : L"",
         box->dwLanguageId ? Hex(box->dwLanguageId) : L"",
         box->cbSize == 40 && !box->hwndOwner ? L"" : L"wrong",
         Part(std::wstring(box->lpszCaption)) + L": " + Part(std::wstring(box->lpszText)));
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
    std::wstring captions = count ? name : L"";
    for (UINT index = 0; index < count; ++index)
        captions += (index ? L',' : L'=') + std::to_wstring(buttons[index].nButtonID) +
                    buttons[index].pszButtonText;
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
    const bool adds = request == NIM_ADD;
    Tell(names[request], record->uFlags ? Hex(record->uFlags) : L"",
         record->uVersion ? std::to_wstring(record->uVersion) : L"",
         record->cbSize == 956 ? L"" : std::to_wstring(record->cbSize),
         adds && record->uCallbackMessage != kTrayCallback ? L"wrong" : L"",
         WidthOf(L"icon=", record->hIcon), Named(L"tip", *record->szTip ? record->szTip : nullptr),
         record->uFlags & NIF_INFO
             ? Hex(record->dwInfoFlags) + L' ' + Part(std::wstring(record->szInfoTitle)) + L": " +
                   Part(std::wstring(record->szInfo))
             : L"",
         WidthOf(L"balloon=", record->hBalloonIcon));
    return AnswerOf(names[request], TRUE);
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
    Tell(save ? L"save" : L"open", Named(L"in", dialog->lpstrInitialDir),
         Named(L"extension", dialog->lpstrDefExt), Named(L"title", dialog->lpstrTitle),
         Named(L"filter", dialog->lpstrFilter ? filter.c_str() : nullptr));
    SetCurrentDirectoryW(L"C:\\windows"); // as the platform's own does
    return FALSE;
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

// Wine's dialog shows no third line and keeps no time.
class RecordingDialog final : public Counted<IProgressDialog> {
public:
    STDMETHODIMP StartProgressDialog(HWND parent, IUnknown*, DWORD flags, LPCVOID) override
    {
        return Add(L"start", flags, parent ? L"modal" : L"");
    }
    STDMETHODIMP StopProgressDialog() override { return Add(L"stop"); }
    STDMETHODIMP SetTitle(PCWSTR title) override
    {
        return Add(L"title", title) | AnswerOf(L"title", S_OK);
    }
    STDMETHODIMP SetAnimation(HINSTANCE, UINT) override { return E_NOTIMPL; }
    STDMETHODIMP_(WINBOOL) HasUserCancelled() override { return AnswerOf(L"cancelled", 0); }
    STDMETHODIMP SetProgress(DWORD done, DWORD total) override { return Add(done, L"of", total); }
    STDMETHODIMP SetProgress64(ULONGLONG done, ULONGLONG total) override
    {
        return Add(done, L"of64", total);
    }
    STDMETHODIMP SetLine(DWORD line, PCWSTR text, WINBOOL compact, LPCVOID) override
    {
        return Add(L"line", line, text, compact ? L"compact" : L"");
    }
    STDMETHODIMP SetCancelMsg(PCWSTR text, LPCVOID) override { return Add(L"cancel", text); }
    STDMETHODIMP Timer(DWORD action, LPCVOID) override
    {
        Add(L"timer", action);
        return E_FAIL;
    }

private:
    template <class... Parts>
    static HRESULT Add(const Parts&... parts)
    {
        Tell(parts...);
        return S_OK;
    }
};

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
         shown.substr(0, shown.rfind(L"\r\n")));
    return TRUE;
}

void RecordMachine()
{
    MachineFunctions& machine = Seam<MachineFunctions>();
    machine.getFirmwareType = [](FIRMWARE_TYPE* type) WINAPI -> BOOL {
        const LONG answer = AnswerOf(L"firmware", FirmwareTypeBios);
        *type = static_cast<FIRMWARE_TYPE>(answer);
        return answer >= 0;
    };
    machine.getFirmwareVariable = [](LPCWSTR, LPCWSTR, void*, DWORD) WINAPI -> DWORD {
        SetLastError(static_cast<DWORD>(AnswerOf(L"variable", ERROR_INVALID_FUNCTION)));
        return 0;
    };
    machine.getJoinInformation = [](LPCWSTR, LPWSTR* name, NETSETUP_JOIN_STATUS* type)
                                     WINAPI -> DWORD {
        Tell(L"join");
        *type = NetSetupDomainName;
        const auto result = static_cast<DWORD>(AnswerOf(L"join", NERR_Success));
        if (result == NERR_Success) *name = _wcsdup(L"EXAMPLE");
        return result;
    };
    machine.freeBuffer = [](void* buffer) WINAPI -> DWORD {
        Tell(L"free");
        free(buffer);
        return NERR_Success;
    };
}

// Wine always grants the foreground.
void RecordForeground()
{
    Foreground& foreground = Seam<Foreground>();
    foreground.get = [] {
        return AnswerOf(L"front", 0) ? GetForegroundWindow() : GetDesktopWindow();
    };
    foreground.set = [](HWND window) {
        Tell(L"front");
        return BOOL{AnswerOf(L"foreground", TRUE) && SetForegroundWindow(window)};
    };
    foreground.allow = [](DWORD process) {
        Tell(L"allow", static_cast<int>(process));
        return TRUE;
    };
    foreground.flash = [](FLASHWINFO* info) {
        Tell(L"flash", Hex(info->dwFlags), info->uCount, info->dwTimeout ? L"wrong" : L"");
        return TRUE;
    };
    foreground.beep = [](UINT type) {
        Tell(L"beep", Hex(type));
        return TRUE;
    };
}

// A sound lasts as long as the answer says so. Whoever waits for one that does not end is found
// out.
void Sound()
{
    const ULONGLONG end = GetTickCount64() + 5'000;
    while (AnswerOf(L"sound", 0))
        if (GetTickCount64() > end)
            return Tell(L"waits too long");
        else
            Sleep(5);
}

void RecordSounds()
{
    Seam<SoundFunctions>() = {[](DWORD frequency, DWORD milliseconds) WINAPI -> BOOL {
                                  Tell(L"tone", frequency, milliseconds);
                                  Sound();
                                  return TRUE;
                              },
                              [](UINT type) WINAPI -> BOOL {
                                  Tell(L"beep", static_cast<int>(type));
                                  return TRUE;
                              },
                              [](LPCWSTR sound, HMODULE module, DWORD flags) WINAPI -> BOOL {
                                  Tell(L"play", sound ? Part(std::wstring(sound)) : L"null",
                                       Hex(flags),
                                       module == GetModuleHandleW(nullptr) ? L"own"
                                       : module                            ? L"module"
                                                                           : L"");
                                  Sound();
                                  return TRUE;
                              }};
}

const struct {
    const wchar_t* name;
    void (*record)();
    void (*restore)();
} kSeams[] = {
    {L"box", [] { Seam<MessageBoxFunctions>().show = ShowBox; },
     [] { Seam<MessageBoxFunctions>() = {}; }},
    {L"task",
     [] {
         Seam<TaskDialogFunctions>() = {ShowTask, ShowTaskEx};
     },
     [] { Seam<TaskDialogFunctions>() = {}; }},
    {L"notask",
     [] {
         Seam<TaskDialogFunctions>() = {nullptr, nullptr};
     },
     nullptr},
    {L"tray", [] { Seam<NotifyIconFunctions>().notify = NotifyIcon; },
     [] { Seam<NotifyIconFunctions>() = {}; }},
    {L"stock", [] { Seam<IconFunctions>().stock = LoadStock; }, [] { Seam<IconFunctions>() = {}; }},
    {L"drives",
     [] {
         // One is known, the others answer late.
         Seam<DriveFunctions>().nameOf = [](const std::wstring& drive) -> std::wstring {
             if (drive == L"C:") return L"Work";
             while (AnswerOf(L"drives", 0))
                 Sleep(5);
             return L"late";
         };
     },
     [] { Seam<DriveFunctions>() = {}; }},
    {L"files", [] { Seam<FileDialogs>().show = ShowFiles; }, [] { Seam<FileDialogs>() = {}; }},
    {L"taskbar",
     [] { Seam<Taskbars>().create = [] { return ComPtr<ITaskbarList3>(new RecordingTaskbar); }; },
     [] { Seam<Taskbars>() = {}; }},
    {L"shell",
     [] {
         Seam<ShellDialogs>().create = [] { return ComPtr<IProgressDialog>(new RecordingDialog); };
     },
     [] { Seam<ShellDialogs>() = {}; }},
    {L"event", [] { Seam<EventLogFunctions>().report = ReportEvent; },
     [] { Seam<EventLogFunctions>() = {}; }},
    {L"machine", RecordMachine, [] { Seam<MachineFunctions>() = {}; }},
    {L"nomachine",
     [] {
         Seam<MachineFunctions>() = {nullptr, nullptr, nullptr, nullptr};
     },
     nullptr},
    {L"foreground", RecordForeground, [] { Seam<Foreground>() = {}; }},
    {L"sound", RecordSounds, [] { Seam<SoundFunctions>() = {}; }},
    {L"caller",
     [] {
         Seam<CallerFunctions>().getThread = [](DWORD* thread) WINAPI -> HRESULT {
             *thread = 4711;
             return AnswerOf(L"caller", S_FALSE);
         };
     },
     [] { Seam<CallerFunctions>() = {}; }},
    {L"nostation",
     [] { Seam<StationFunctions>().current = []() WINAPI -> HWINSTA { return nullptr; }; },
     [] { Seam<StationFunctions>() = {}; }},
};

} // namespace

Stage::~Stage()
{
    for (const auto& seam : kSeams)
        if (seam.restore) seam.restore();
    Seam<AnswerSecond>() = {};
    ThisApartment().osVersion = QueryOsVersion();
    answers.clear();
    Forget();
}

std::vector<std::wstring> Stage::Classes()
{
    std::vector<std::wstring> names;
    for (const CatalogueRow& row : kCatalogue)
        names.emplace_back(row.name);
    return names;
}

ScriptObject ScriptObject::Make(std::wstring_view className)
{
    for (const CatalogueRow& row : kCatalogue) {
        if (className != row.name) continue;
        ComPtr<IDispatch> object;
        Check(CreateHere(row, IID_PPV_ARGS(&object)));
        return ScriptObject(object.Get());
    }
    throw std::logic_error("no class " + Narrow(className));
}

ComPtr<IDispatch> Stage::Make(const std::wstring& name)
{
    return ScriptObject::Make(name).Dispatch();
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
    for (const auto& seam : kSeams)
        if (name == seam.name) return seam.record();
    throw std::logic_error("no seam " + Narrow(name));
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
    return told;
}

void Stage::Forget()
{
    const std::lock_guard guard(mutex);
    told.clear();
}

} // namespace quill::test
