// The message loops of the server's threads. Every pump goes through DispatchPending, so that the
// keys of a modeless window work whoever pumps.
#pragma once

#include "core/Platform.h"

namespace quill {

// Sees each posted message of its thread before it is dispatched; true when it has dealt with it.
using MessagePreview = bool (*)(MSG& message);

// Dispatches all messages that wait. False when the thread is to end: WM_QUIT was met, and has been
// posted again for the loop outside.
bool DispatchPending();

// One round of a wait: sleeps until input or a call is there, or the event is set, for at most
// `milliseconds`, and dispatches what is there. False when the thread is to end.
bool WaitForMessages(DWORD milliseconds, HANDLE event = nullptr);

// Waits for the event, serving messages that are sent, but none that is posted.
void WaitForEvent(HANDLE event);

// Pumps until WM_QUIT. Returns its exit code.
int RunMessageLoop();

// A window that is never shown and receives messages for `procedure` (a WNDPROC that finds
// `parameter` as CREATESTRUCT::lpCreateParams). Broadcasts reach it unless `messageOnly`.
HWND CreateHiddenWindow(const wchar_t* className, WNDPROC procedure, void* parameter,
                        bool messageOnly);

} // namespace quill
