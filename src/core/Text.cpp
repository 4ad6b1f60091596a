#include "core/Text.h"

#include <windows.h>

#include <oleauto.h>

#include <algorithm>

namespace quill {

namespace {

// Calls `use` with each part of the text between the separators.
template <class Use>
void ForEachPart(std::wstring_view text, std::wstring_view separator, Use&& use)
{
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(separator, begin), text.size());
        use(text.substr(begin, end - begin));
        begin = end + separator.size();
    }
}

std::wstring Replace(std::wstring_view text, std::wstring_view from, std::wstring_view to)
{
    std::wstring replaced;
    replaced.reserve(text.size());
    ForEachPart(text, from, [&](std::wstring_view part) {
        if (part.data() != text.data()) replaced += to;
        replaced += part;
    });
    return replaced;
}

constexpr std::wstring_view kNul{L"\0", 1};

// True when the text is like the pattern, where * stands for any text; `fits` says whether a
// character of the text is one that another of the pattern stands for.
template <class FitsOne>
bool Fits(std::wstring_view text, std::wstring_view pattern, FitsOne fits) noexcept
{
    size_t at = 0;
    size_t wanted = 0;
    // Where to go on when the rest does not fit: the last * then takes one character more.
    size_t star = std::wstring_view::npos;
    size_t takenBy = 0;
    while (at < text.size()) {
        if (wanted < pattern.size() && pattern[wanted] == L'*') {
            star = ++wanted;
            takenBy = at;
        } else if (wanted < pattern.size() && fits(text[at], pattern[wanted])) {
            ++at;
            ++wanted;
        } else if (star != std::wstring_view::npos) {
            wanted = star;
            at = ++takenBy;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', wanted) == std::wstring_view::npos;
}

} // namespace

std::wstring NulsToLineBreaks(const std::wstring& text)
{
    return Replace(text, kNul, kLineBreak);
}

std::wstring LineBreaksToNuls(const std::wstring& text)
{
    return Replace(text, kLineBreak, kNul);
}

std::vector<std::wstring> SplitAt(const std::wstring& text, std::wstring_view separator)
{
    std::vector<std::wstring> parts;
    ForEachPart(text, separator, [&](std::wstring_view part) { parts.emplace_back(part); });
    return parts;
}

std::vector<std::wstring> SplitLines(const std::wstring& text)
{
    return SplitAt(text, kLineBreak);
}

std::wstring_view CutForDisplay(std::wstring_view text, size_t limit) noexcept
{
    text = text.substr(0, limit);
    if (!text.empty() && IS_HIGH_SURROGATE(text.back())) text.remove_suffix(1);
    return text;
}

std::string Encode(std::wstring_view text, unsigned codePage)
{
    const int units = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(codePage, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), units, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::wstring Decode(std::string_view bytes, unsigned codePage)
{
    const int size = static_cast<int>(bytes.size());
    const int units = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<size_t>(units), L'\0');
    MultiByteToWideChar(codePage, 0, bytes.data(), size, text.data(), units);
    return text;
}

std::string ToAnsi(std::wstring_view text)
{
    return Encode(text, CP_ACP);
}

std::wstring FromAnsi(std::string_view bytes)
{
    return Decode(bytes, CP_ACP);
}

std::wstring UpperCase(std::wstring text)
{
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

bool IsLike(std::wstring_view text, std::wstring_view pattern) noexcept
{
    return Fits(text, pattern,
                [](wchar_t unit, wchar_t wanted) { return wanted == L'?' || wanted == unit; });
}

bool FitsMask(std::wstring_view text, std::wstring_view mask) noexcept
{
    return Fits(text, mask, [](wchar_t unit, wchar_t wanted) {
        if (wanted == L'#') return unit >= L'0' && unit <= L'9';
        if (wanted == L'?') return IsCharAlphaW(unit) != FALSE;
        return wanted == unit;
    });
}

std::wstring UserDecimal()
{
    wchar_t decimal[4] = L"."; // the longest that there is, and its end
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, decimal, std::size(decimal));
    return decimal;
}

std::optional<double> NumberOf(std::wstring_view text, std::wstring_view decimal)
{
    const auto take = [&text](std::wstring_view beginning) {
        const bool found = !beginning.empty() && text.starts_with(beginning);
        if (found) text.remove_prefix(beginning.size());
        return found;
    };
    std::wstring plain; // as the platform reads it
    const auto takeSign = [&] {
        if (take(L"-"))
            plain += L'-';
        else
            take(L"+");
    };
    const auto takeDigits = [&] {
        const size_t count = std::min(text.find_first_not_of(L"0123456789"), text.size());
        plain += text.substr(0, count);
        text.remove_prefix(count);
        return count;
    };

    text.remove_prefix(std::min(text.find_first_not_of(L' '), text.size()));
    text = text.substr(0, text.find_last_not_of(L' ') + 1);
    takeSign();
    size_t digits = takeDigits();
    if (take(decimal) || take(L".")) {
        plain += L'.';
        digits += takeDigits();
    }
    if (digits == 0) return {};
    if (take(L"e") || take(L"E")) {
        plain += L'e';
        takeSign();
        if (takeDigits() == 0) return {};
    }
    constexpr LCID kEnglish = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT);
    double number = 0;
    if (!text.empty() ||
        FAILED(VarR8FromStr(plain.data(), kEnglish, LOCALE_NOUSEROVERRIDE, &number)))
        return {};
    return number;
}

} // namespace quill
