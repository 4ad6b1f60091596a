#include "services/bytefn.h"

#include <algorithm>

#include "core/Text.h"
#include "core/quillfn.h"
#include "services/Bytes.h"

namespace quill {

namespace {

size_t NumberSize(VARTYPE type) noexcept
{
    switch (type) {
    case VT_UI1: return 1;
    case VT_I2: return 2;
    case VT_I4:
    case VT_R4: return 4;
    case VT_R8:
    case VT_CY: return 8;
    default: return 0;
    }
}

// As lenient as a language that reads a number up to the first character that is not a digit.
BYTE ByteOfPair(wchar_t first, wchar_t second) noexcept
{
    const int high = HexDigit(first);
    if (high < 0) return 0;
    const int low = HexDigit(second);
    return static_cast<BYTE>(low < 0 ? high : high * 16 + low);
}

bool IsHexadecimal(std::wstring_view text) noexcept
{
    return text.size() >= 2 && text[0] == L'&' && (text[1] == L'H' || text[1] == L'h');
}

std::vector<BYTE> BytesOfDigits(std::wstring_view digits)
{
    std::vector<BYTE> bytes;
    bytes.reserve((digits.size() + 1) / 2);
    for (size_t index = 0; index < digits.size(); index += 2) // an odd last digit is a high one
        bytes.push_back(
            ByteOfPair(digits[index], index + 1 < digits.size() ? digits[index + 1] : L'0'));
    return bytes;
}

std::optional<std::vector<BYTE>> BytesOfText(std::wstring_view text, const ByteForm& form)
{
    if (form.useHexstring && IsHexadecimal(text)) {
        if (text.size() == 2) return {};
        return BytesOfDigits(text.substr(2));
    }
    if (form.useUnicode) {
        const auto* first = reinterpret_cast<const BYTE*>(text.data());
        return std::vector<BYTE>(first, first + text.size() * sizeof(wchar_t));
    }
    const std::string ansi = ToAnsi(text);
    return std::vector<BYTE>(ansi.begin(), ansi.end());
}

} // namespace

std::optional<std::span<const BYTE>> BytesOf(const VARIANT& value, const ByteForm& form,
                                             std::vector<BYTE>& storage)
{
    if (const SAFEARRAY* array = ArrayOf(value)) {
        VARTYPE type = VT_EMPTY;
        if (array->cDims != 1 ||
            FAILED(SafeArrayGetVartype(const_cast<SAFEARRAY*>(array), &type)) || type != VT_UI1)
            return {};
        return DataOf<const BYTE>(*array);
    }
    if (V_VT(&value) & VT_ARRAY) return {};

    const Variant single = Variant::Dereferenced(value);
    if (V_VT(&single) == VT_BSTR) {
        auto bytes = BytesOfText({V_BSTR(&single), SysStringLen(V_BSTR(&single))}, form);
        if (!bytes) return {};
        storage = std::move(*bytes);
        return storage;
    }
    const size_t size = NumberSize(V_VT(&single));
    if (size == 0) return {};
    storage.assign(&V_UI1(&single), &V_UI1(&single) + size);
    if (form.twistEndian) std::reverse(storage.begin(), storage.end());
    return storage;
}

} // namespace quill
