#include "core/MessagePump.h"

#include "core/Apartment.h"
#include "core/AutomationError.h"

namespace quill {

namespace {

void Dispatch(MSG& message)
{
    const MessagePreview preview = ThisApartment().preview;
    if (preview && preview(message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

} // namespace

bool DispatchPending()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        Dispatch(message);
    }
    return true;
}

bool WaitForMessages(DWORD milliseconds, HANDLE event)
{
    const DWORD woken = MsgWaitForMultipleObjectsEx(event ? 1 : 0, &event, milliseconds,
                                                    QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    return woken == WAIT_TIMEOUT || DispatchPending();
}

void WaitForEvent(HANDLE event)
{
    MSG message;
    while (MsgWaitForMultipleObjectsEx(1, &event, INFINITE, QS_SENDMESSAGE, MWMO_INPUTAVAILABLE) ==
           WAIT_OBJECT_0 + 1)
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

int RunMessageLoop()
{
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        Dispatch(message);
    return static_cast<int>(message.wParam);
}

HWND CreateHiddenWindow(const wchar_t* className, WNDPROC procedure, void* parameter,
                        bool messageOnly)
{
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className;
    RegisterClassExW(&windowClass); // fails if the class is already registered, which is fine
    const HWND window = CreateWindowExW(0, className, L"", WS_POPUP, 0, 0, 0, 0,
                                        messageOnly ? HWND_MESSAGE : nullptr, nullptr,
                                        windowClass.hInstance, parameter);
    if (!window) RaiseLastError();
    return window;
}

} // namespace quill
