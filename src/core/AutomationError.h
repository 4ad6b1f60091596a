// What goes wrong, as scripts see it: numbers, sources and texts, and the exception that carries
// them to the boundary.
#pragma once

#include "core/Platform.h"

namespace quill {

// An error on its way to the script. Thrown by Raise, RaiseRuntimeError and Check; caught only by
// the automation boundary. An empty source stands for the class whose method failed.
struct AutomationError {
    HRESULT number;
    std::wstring source;
    std::wstring description;
};

// One of the system's own errors. A description that ends in a colon is followed by the value that
// was at fault.
struct ErrorEntry {
    HRESULT number;
    const wchar_t* source;
    const wchar_t* description;
};

constexpr HRESULT ErrorNumber(unsigned number)
{
    return static_cast<HRESULT>(number);
}

// Every error that the system raises of its own, of all classes.
namespace error {
inline constexpr ErrorEntry kNoLogText{ErrorNumber(0x80040335), L"Quill.EventLog",
                                       L"Missing event log string."};
inline constexpr ErrorEntry kInvalidLogMode{ErrorNumber(0x80040336), L"Quill.EventLog",
                                            L"Invalid log mode."};
inline constexpr ErrorEntry kProfileNotFound{ErrorNumber(0x8004033F), L"Quill.Profile",
                                             L"Profile not found: "};
inline constexpr ErrorEntry kNoProfile{ErrorNumber(0x80040340), L"Quill.Profile",
                                       L"No Profile defined."};
inline constexpr ErrorEntry kValueTooLong{ErrorNumber(0x80040341), L"Quill.Profile",
                                          L"Key value length is beyond maximum (0x2000)."};
inline constexpr ErrorEntry kSectionTooLong{ErrorNumber(0x80040341), L"Quill.Profile",
                                            L"Section entries beyond maximum (0x8000)."};
inline constexpr ErrorEntry kFileNotOpen{ErrorNumber(0x8004034A), L"Quill.BinFile",
                                         L"File is not open: "};
inline constexpr ErrorEntry kNoWriteAccess{ErrorNumber(0x8004034C), L"Quill.BinFile",
                                           L"Write access not permitted."};
inline constexpr ErrorEntry kReadSizeUndefined{ErrorNumber(0x8004034D), L"Quill.BinFile",
                                               L"Number of bytes to read is undefined."};
inline constexpr ErrorEntry kWriteSizeMismatch{
    ErrorNumber(0x8004034E), L"Quill.BinFile",
    L"Write data do not match the requested number of bytes."};
inline constexpr ErrorEntry kWriteDataUnusable{ErrorNumber(0x8004034E), L"Quill.BinFile",
                                               L"Could not prepare write data."};
inline constexpr ErrorEntry kNoFileSize{ErrorNumber(0x80040350), L"Quill.BinFile",
                                        L"API function failed to return the file size."};
inline constexpr ErrorEntry kNoFilePointer{ErrorNumber(0x80040350), L"Quill.BinFile",
                                           L"API function failed to return the file pointer."};
inline constexpr ErrorEntry kFilePointerNotSet{ErrorNumber(0x80040350), L"Quill.BinFile",
                                               L"API function failed to set the file pointer."};
inline constexpr ErrorEntry kLocationNotSet{ErrorNumber(0x80040350), L"Quill.BinFile",
                                            L"Could not set the assigned file pointer."};
inline constexpr ErrorEntry kInvalidDialogMode{ErrorNumber(0x80040353), L"Quill.FileSelection",
                                               L"Mode parameter: Invalid argument."};
inline constexpr ErrorEntry kControlCreation{ErrorNumber(0x80040357), L"Quill.ProgressWindow",
                                             L"Control creation error."};
inline constexpr ErrorEntry kWrongVariantType{ErrorNumber(0x80040360), L"Quill.BinFile",
                                              L"Wrong argument (wrong Variant type)"};
inline constexpr ErrorEntry kWrongPropertyValue{ErrorNumber(0x80040361), L"Quill.BinFile",
                                                L"Wrong property value: "};
} // namespace error

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

// Turns a failing HRESULT of the platform into an error with the platform's own text.
void Check(HRESULT result);

// The same for a platform function that reports through GetLastError.
[[noreturn]] void RaiseLastError();

// Called in a catch block: turns the exception in flight into the thread's error information and
// its HRESULT. `interfaceId` and `source` name the interface and class whose method failed.
HRESULT ReportException(const IID& interfaceId, const std::wstring& source) noexcept;

} // namespace quill
