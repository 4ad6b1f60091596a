// What goes wrong, as scripts see it: numbers, sources and texts, and the exception that carries
// them to the boundary.
#pragma once

#include <string>

#include "core/Platform.h"

namespace quill {

// An error on its way to the script. Thrown by Raise, RaiseRuntimeError and Check; caught only by
// the automation boundary. An empty source stands for the class whose method failed.
struct AutomationError {
    HRESULT number;
    std::wstring source;
    std::wstring description;
};

// One of a class's own errors; they stand at the top of its .cpp. A description that ends in a
// colon is followed by the value that was at fault.
struct PublishedError {
    HRESULT number;
    const wchar_t* description;
};

constexpr HRESULT ErrorNumber(unsigned number)
{
    return static_cast<HRESULT>(number);
}

// Classic run-time errors of scripting languages. `Err.Number` reads these very numbers.
enum class RuntimeError : unsigned {
    InvalidCall = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    TypeMismatch = 13,
    ObjectNotSet = 91,
    InvalidUseOfNull = 94,
    EntryPointNotFound = 453,
};

// Raises a run-time error of the language, with its classic text.
[[noreturn]] void RaiseRuntimeError(RuntimeError error);

// The number that a property shows for this error: a run-time error's classic one, else the
// HRESULT.
LONG NumberOf(const AutomationError& error) noexcept;

// Turn a failure of the platform into an error with the platform's own text, for functions that
// return an HRESULT, a Windows error code, or success with the reason in GetLastError.
void Check(HRESULT result);
void CheckWin32(LSTATUS code);
void CheckLast(BOOL succeeded);

// Raise a failure with this code, or with the one in GetLastError; E_FAIL if that is 0.
[[noreturn]] void RaiseWin32(DWORD code);
[[noreturn]] void RaiseLastError();

// Called in a catch block: turns the exception in flight into the thread's error information and
// its HRESULT. `interfaceId` and `source` name the interface and class whose method failed.
HRESULT ReportException(const IID& interfaceId, const std::wstring& source) noexcept;

} // namespace quill
