#include "services/Bytes.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include <wincrypt.h>

#include "core/Text.h"
#include "services/Lists.h"

namespace quill {

namespace {

constexpr UINT kUtf16 = 1200;
constexpr UINT kUtf16BigEndian = 1201;

void SwapPairs(Bytes& bytes) noexcept
{
    for (size_t index = 0; index + 1 < bytes.size(); index += 2)
        std::swap(bytes[index], bytes[index + 1]);
}

bool IsBlank(wchar_t unit) noexcept
{
    return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n';
}

Bytes BytesOrNone(const VARIANT& data)
{
    return BytesIn(data).value_or(Bytes());
}

} // namespace

std::optional<Bytes> BytesIn(const VARIANT& data)
{
    if (const SAFEARRAY* array = ArrayOf(data)) {
        VARTYPE type = VT_EMPTY;
        if (array->cDims != 1 || FAILED(SafeArrayGetVartype(const_cast<SAFEARRAY*>(array), &type)))
            return {};
        if (type == VT_UI1) {
            const auto elements = DataOf<std::uint8_t>(*array);
            return Bytes(elements.begin(), elements.end());
        }
        const auto elements = ElementsIn(data);
        if (!elements) return {};
        Bytes bytes;
        bytes.reserve(elements->size());
        Variant number;
        for (const Variant& element : *elements) {
            if (!Convert(number, element, VT_R8)) return {};
            const double value = V_R8(&number);
            // Also what is not a number fails here.
            if (!(value >= 0 && value <= 255) || value != std::floor(value)) return {};
            bytes.push_back(static_cast<std::uint8_t>(value));
        }
        return bytes;
    }
    const Variant value = Variant::Dereferenced(data);
    if (V_VT(&value) == VT_EMPTY) return Bytes();
    if (V_VT(&value) != VT_BSTR) return {};
    return ToCodePage({V_BSTR(&value), SysStringLen(V_BSTR(&value))}, CP_UTF8);
}

Variant MakeByteArray(const Bytes& bytes)
{
    Array array = MakeArray(VT_UI1, bytes.size());
    std::copy(bytes.begin(), bytes.end(), DataOf<std::uint8_t>(*array).begin());
    return Variant(std::move(array));
}

Bytes ToCodePage(std::wstring_view text, UINT codePage)
{
    if (text.empty()) return {};
    if (codePage == kUtf16 || codePage == kUtf16BigEndian) {
        const auto* first = reinterpret_cast<const std::uint8_t*>(text.data());
        Bytes bytes(first, first + text.size() * sizeof(wchar_t));
        if (codePage == kUtf16BigEndian) SwapPairs(bytes);
        return bytes;
    }
    const std::string encoded = Encode(text, codePage);
    return {encoded.begin(), encoded.end()};
}

std::wstring FromCodePage(const Bytes& bytes, UINT codePage)
{
    if (bytes.empty() || bytes.size() > INT_MAX) return {};
    if (codePage == kUtf16BigEndian) {
        Bytes swapped = bytes;
        SwapPairs(swapped);
        return FromCodePage(swapped, kUtf16);
    }
    if (codePage == kUtf16) {
        // An odd byte at the end is half a character.
        std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
        if (bytes.size() % sizeof(wchar_t)) text += L'\xFFFD';
        return text;
    }
    return Decode({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, codePage);
}

Variant TextToBytes(const std::wstring& text, LONG codePage)
{
    return MakeByteArray(ToCodePage(text, static_cast<UINT>(codePage)));
}

std::wstring BytesToText(const VARIANT& data, LONG codePage)
{
    return FromCodePage(BytesOrNone(data), static_cast<UINT>(codePage));
}

std::wstring ToHex(const Bytes& bytes)
{
    static constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    std::wstring digits;
    digits.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        digits += kDigits[byte >> 4];
        digits += kDigits[byte & 15];
    }
    return digits;
}

std::wstring EncodeHex(const VARIANT& data)
{
    return ToHex(BytesOrNone(data));
}

Variant DecodeHex(const std::wstring& digits)
{
    Bytes bytes;
    bytes.reserve(digits.size() / 2);
    for (size_t index = 0; index < digits.size(); ++index) {
        if (IsBlank(digits[index])) continue;
        const int high = HexDigit(digits[index]);
        const int low = ++index < digits.size() ? HexDigit(digits[index]) : -1;
        if (high < 0 || low < 0) return MakeByteArray({});
        bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    return MakeByteArray(bytes);
}

std::wstring EncodeBase64(const VARIANT& data)
{
    static const auto encode =
        FindSystemFunction<decltype(CryptBinaryToStringW)>(L"crypt32.dll", "CryptBinaryToStringW");
    constexpr DWORD kFlags = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    const Bytes bytes = BytesOrNone(data);
    const auto size = static_cast<DWORD>(bytes.size());
    DWORD length = 0; // with the NUL at first, without it then
    if (!encode || size == 0 || !encode(bytes.data(), size, kFlags, nullptr, &length)) return {};
    std::wstring text(length, L'\0');
    if (!encode(bytes.data(), size, kFlags, text.data(), &length)) return {};
    text.resize(length);
    return text;
}

Variant DecodeBase64(const std::wstring& text)
{
    static const auto decode =
        FindSystemFunction<decltype(CryptStringToBinaryW)>(L"crypt32.dll", "CryptStringToBinaryW");
    std::wstring packed = text;
    std::erase_if(packed, IsBlank);
    // A length of 0 would have the platform look for a NUL, which a script's text may hold.
    const auto length = static_cast<DWORD>(packed.size());
    DWORD size = 0;
    Bytes bytes;
    if (decode && length > 0 && packed.find(L'\0') == std::wstring::npos &&
        decode(packed.data(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr)) {
        bytes.resize(size);
        if (!decode(packed.data(), length, CRYPT_STRING_BASE64, bytes.data(), &size, nullptr,
                    nullptr))
            size = 0;
        bytes.resize(size);
    }
    return MakeByteArray(bytes);
}

int HexDigit(wchar_t digit) noexcept
{
    if (digit >= L'0' && digit <= L'9') return digit - L'0';
    if (digit >= L'A' && digit <= L'F') return digit - L'A' + 10;
    if (digit >= L'a' && digit <= L'f') return digit - L'a' + 10;
    return -1;
}

} // namespace quill
