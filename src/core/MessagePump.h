// The message loops of the server's threads. Every pump uses DispatchPending, so that the
// keys of a modeless window work in all of them.
#pragma once

#include "core/Platform.h"

namespace quill {

// Sees each posted message of its thread before it is dispatched; true when it has handled it.
using MessagePreview = bool (*)(MSG& message);

// Dispatches all pending messages. False if the thread should end: WM_QUIT was found, and has been
// posted again for the outer loop.
bool DispatchPending();

// One round of a wait: sleeps until there is input or a call, or the event is set, for at most
// `milliseconds`, and dispatches what has come. False if the thread should end.
bool WaitForMessages(DWORD milliseconds, HANDLE event = nullptr);

// Waits for the event; serves sent messages, but no posted ones.
void WaitForEvent(HANDLE event);

// Pumps until WM_QUIT. Returns its exit code.
int RunMessageLoop();

// A window that is never shown and receives messages for `procedure` (a WNDPROC that finds
// `parameter` as CREATESTRUCT::lpCreateParams). Broadcasts reach it unless `messageOnly`.
HWND CreateHiddenWindow(const wchar_t* className, WNDPROC procedure, void* parameter,
                        bool messageOnly);

} // namespace quill
