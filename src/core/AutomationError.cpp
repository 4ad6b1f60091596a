#include "core/AutomationError.h"

#include <new>

namespace quill {

namespace {

constexpr const wchar_t* RuntimeErrorText(RuntimeError error)
{
    switch (error) {
    case RuntimeError::InvalidCall: return L"Invalid procedure call or argument";
    case RuntimeError::Overflow: return L"Overflow";
    case RuntimeError::SubscriptOutOfRange: return L"Subscript out of range";
    case RuntimeError::TypeMismatch: return L"Type mismatch";
    case RuntimeError::ObjectNotSet: return L"Object variable or With block variable not set";
    case RuntimeError::InvalidUseOfNull: return L"Invalid use of Null";
    case RuntimeError::EntryPointNotFound: return L"Specified DLL function not found";
    }
    return L"";
}

std::wstring PlatformText(HRESULT result)
{
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, static_cast<DWORD>(result), 0, text,
                                  static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && text[length - 1] <= L' ')
        --length;
    return {text, length};
}

HRESULT SetError(const IID& interfaceId, const std::wstring& source, const AutomationError& error)
{
    ComPtr<ICreateErrorInfo> creation;
    ComPtr<IErrorInfo> info;
    const std::wstring& shownSource = error.source.empty() ? source : error.source;
    if (SUCCEEDED(CreateErrorInfo(&creation))) {
        creation->SetGUID(interfaceId);
        creation->SetSource(const_cast<wchar_t*>(shownSource.c_str()));
        creation->SetDescription(const_cast<wchar_t*>(error.description.c_str()));
        if (SUCCEEDED(creation.As(&info))) SetErrorInfo(0, info.Get());
    }
    return error.number;
}

} // namespace

void RaiseRuntimeError(RuntimeError error)
{
    const auto number =
        MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, static_cast<unsigned>(error));
    throw AutomationError{number, {}, RuntimeErrorText(error)};
}

LONG NumberOf(const AutomationError& error) noexcept
{
    return HRESULT_FACILITY(error.number) == FACILITY_CONTROL ? HRESULT_CODE(error.number)
                                                              : error.number;
}

void Check(HRESULT result)
{
    if (FAILED(result)) throw AutomationError{result, {}, PlatformText(result)};
}

void CheckWin32(LSTATUS code)
{
    if (code != ERROR_SUCCESS) RaiseWin32(static_cast<DWORD>(code));
}

void CheckLast(BOOL succeeded)
{
    if (!succeeded) RaiseLastError();
}

void RaiseWin32(DWORD code)
{
    const HRESULT result = code == 0 ? E_FAIL : HRESULT_FROM_WIN32(code);
    throw AutomationError{result, {}, PlatformText(result)};
}

void RaiseLastError()
{
    RaiseWin32(GetLastError());
}

HRESULT ReportException(const IID& interfaceId, const std::wstring& source) noexcept
{
    SetErrorInfo(0, nullptr); // what an earlier call left behind does not explain this failure
    try {
        try {
            throw;
        } catch (const AutomationError& error) {
            return SetError(interfaceId, source, error);
        }
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace quill
