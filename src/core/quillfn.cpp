#include "core/quillfn.h"

#include "core/StartUp.h"

namespace quill {

namespace {

// Where bare file names are looked for: beside the program, else in the current directory.
std::wstring HomeFolder()
{
    const std::wstring& program = ThisApartment().programPath;
    const auto separator = program.find_last_of(L'\\');
    if (separator != std::wstring::npos) return program.substr(0, separator);
    wchar_t folder[MAX_PATH];
    const DWORD length = GetCurrentDirectoryW(MAX_PATH, folder);
    if (length >= MAX_PATH) return {}; // it did not fit, and this is the room that it needs
    return {folder, length};
}

bool IsNumeric(const VARIANT& value) noexcept
{
    switch (V_VT(&value)) {
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DECIMAL:
    case VT_BOOL:
    case VT_EMPTY: return true;
    case VT_BSTR: {
        double number;
        return SUCCEEDED(VarR8FromStr(V_BSTR(&value), LOCALE_USER_DEFAULT, 0, &number));
    }
    default: return false;
    }
}

// True when left <= right as automation compares Variants.
bool NotAbove(const VARIANT& left, const VARIANT& right) noexcept
{
    const HRESULT order =
        VarCmp(const_cast<VARIANT*>(&left), const_cast<VARIANT*>(&right), LOCALE_USER_DEFAULT, 0);
    return order == static_cast<HRESULT>(VARCMP_LT) || order == static_cast<HRESULT>(VARCMP_EQ);
}

} // namespace

void Raise(HRESULT number, const std::wstring& source, const std::wstring& description)
{
    throw AutomationError{number, source, description};
}

void Raise(const ErrorEntry& entry, const std::wstring& value)
{
    Raise(entry.number, entry.source, entry.description + value);
}

short ElementCount(const VARIANT& array)
{
    const SAFEARRAY* elements = ArrayOf(array);
    // The bounds of dimension 1 stand last: dimensions are stored from right to left.
    if (!elements || elements->cDims == 0) return 0;
    const SAFEARRAYBOUND& bound = elements->rgsabound[elements->cDims - 1];
    if (bound.lLbound != 0) return 0;
    if (bound.cElements > SHRT_MAX) RaiseRuntimeError(RuntimeError::Overflow);
    return static_cast<short>(bound.cElements);
}

bool IsArrayByReference(const VARIANT& value) noexcept
{
    return (V_VT(&value) & (VT_ARRAY | VT_BYREF)) == (VT_ARRAY | VT_BYREF);
}

std::string ToAnsi(std::wstring_view text)
{
    const int units = static_cast<int>(text.size());
    std::string ansi(static_cast<size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr,
                                                             0, nullptr, nullptr)),
                     '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), units, ansi.data(), static_cast<int>(ansi.size()),
                        nullptr, nullptr);
    return ansi;
}

std::wstring FromAnsi(std::string_view text)
{
    const int bytes = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

bool FileExists(std::wstring& path, bool resolve) noexcept
{
    try {
        if (resolve && !path.empty() && PathIsFileSpecW(path.c_str()))
            path = WithTrailingBackslash(HomeFolder()) + path;
        return GetFileAttributesA(ToAnsi(path).c_str()) != INVALID_FILE_ATTRIBUTES;
    } catch (...) {
        return false;
    }
}

std::wstring WithTrailingBackslash(std::wstring folder)
{
    if (!folder.empty() && folder.back() != L'\\') folder += L'\\';
    return folder;
}

bool InRange(const VARIANT& value, const VARIANT& low, const VARIANT& high) noexcept
{
    return IsNumeric(value) && NotAbove(low, value) && NotAbove(value, high);
}

} // namespace quill
