#include "core/quillfn.h"

#include "core/Text.h"

namespace quill {

void Raise(HRESULT number, const std::wstring& source, const std::wstring& description)
{
    throw AutomationError{number, source, description};
}

void Raise(const PublishedError& entry, const std::wstring& value)
{
    throw AutomationError{entry.number, {}, entry.description + value};
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

bool FileExists(const std::wstring& path) noexcept
{
    try {
        const std::string ansi = ToAnsi(path);
        // Kept as published: no name outside the code page exists. The conversion may have put
        // similar letters in place of what the code page lacks.
        return FromAnsi(ansi) == path &&
               GetFileAttributesA(ansi.c_str()) != INVALID_FILE_ATTRIBUTES;
    } catch (...) {
        return false;
    }
}

std::wstring WithTrailingBackslash(std::wstring folder)
{
    if (!folder.empty() && folder.back() != L'\\') folder += L'\\';
    return folder;
}

} // namespace quill
