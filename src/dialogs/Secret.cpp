#include "dialogs/Secret.h"

#include <algorithm>
#include <functional>

#include <ntsecapi.h> // needs the platform's main header before it

namespace quill {

void Wipe(std::wstring& text) noexcept
{
    SecureZeroMemory(text.data(), text.capacity() * sizeof(wchar_t));
}

PassingTexts::~PassingTexts()
{
    for (std::wstring& text : texts)
        Wipe(text);
}

Secret::Secret(const std::wstring& text) : mixed_(text.size(), L'\0'), bits_(text.size(), L'\0')
{
    if (!RtlGenRandom(bits_.data(), static_cast<ULONG>(bits_.size() * sizeof(wchar_t))))
        throw AutomationError{E_FAIL, {}, {}};
    std::ranges::transform(text, bits_, mixed_.begin(), std::bit_xor());
}

Variant Secret::Value() const
{
    PassingText plain(mixed_);
    std::ranges::transform(mixed_, bits_, plain.text.begin(), std::bit_xor());
    return Variant(plain.text);
}

} // namespace quill
