#include "services/Urls.h"

#include <algorithm>

#include "core/Paths.h"
#include "services/Bytes.h"
#include "services/Lists.h"

namespace quill {

namespace {

// The longest URL that the platform's routines are made for, in characters.
constexpr size_t kLongestUrl = 2083;

bool IsUsable(const std::wstring& url) noexcept
{
    return url.size() <= kLongestUrl && IsPlain(url);
}

// Without the blanks and control characters around it, which a URL ignores. One that has no other
// characters makes the platform read out of bounds.
std::wstring Trimmed(const std::wstring& url)
{
    const auto counts = [](wchar_t unit) { return unit > L' '; };
    const auto first = std::ranges::find_if(url, counts);
    const auto last = std::find_if(url.rbegin(), std::make_reverse_iterator(first), counts).base();
    return {first, last};
}

bool IsAsciiLetter(wchar_t unit) noexcept
{
    return (unit >= L'A' && unit <= L'Z') || (unit >= L'a' && unit <= L'z');
}

bool IsDigit(wchar_t unit) noexcept
{
    return unit >= L'0' && unit <= L'9';
}

bool IsUnreserved(wchar_t unit) noexcept
{
    return IsAsciiLetter(unit) || IsDigit(unit) ||
           std::wstring_view(L"-._~").find(unit) != std::wstring_view::npos;
}

// The byte that "%XX" at this place stands for; -1 if there is none.
int EscapedByte(const std::wstring& text, size_t index) noexcept
{
    if (text[index] != L'%' || text.size() - index < 3) return -1;
    const int high = HexDigit(text[index + 1]);
    const int low = HexDigit(text[index + 2]);
    return high < 0 || low < 0 ? -1 : high << 4 | low;
}

// Replaces the escaped bytes from `lowest` on by the characters whose UTF-8 they are.
std::wstring Unescape(const std::wstring& text, int lowest)
{
    std::wstring decoded;
    decoded.reserve(text.size());
    Bytes run; // one character can take several escaped bytes
    for (size_t index = 0; index < text.size();) {
        const int byte = EscapedByte(text, index);
        if (byte >= lowest) {
            run.push_back(static_cast<std::uint8_t>(byte));
            index += 3;
            continue;
        }
        decoded += FromCodePage(run, CP_UTF8);
        run.clear();
        decoded += text[index++];
    }
    return decoded += FromCodePage(run, CP_UTF8);
}

// Takes what precedes the first of `marks` off the front of `rest`.
std::wstring_view TakeUntil(std::wstring_view& rest, std::wstring_view marks) noexcept
{
    const std::wstring_view taken = rest.substr(0, rest.find_first_of(marks));
    rest.remove_prefix(taken.size());
    return taken;
}

// Takes what precedes this mark, and the mark; nothing when it is not there.
std::wstring_view TakeThrough(std::wstring_view& rest, size_t mark) noexcept
{
    if (mark == std::wstring_view::npos) return {};
    const std::wstring_view taken = rest.substr(0, mark);
    rest.remove_prefix(mark + 1);
    return taken;
}

bool IsScheme(std::wstring_view text) noexcept
{
    return !text.empty() && IsAsciiLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), [](wchar_t unit) {
               return IsAsciiLetter(unit) || IsDigit(unit) || unit == L'+' || unit == L'-' ||
                      unit == L'.';
           });
}

} // namespace

std::wstring EncodeUrl(const std::wstring& text, bool plus)
{
    std::wstring encoded;
    for (const std::uint8_t byte : ToCodePage(text, CP_UTF8)) {
        if (IsUnreserved(byte))
            encoded += byte;
        else if (plus && byte == ' ')
            encoded += L'+';
        else
            encoded += L'%' + ToHex({byte});
    }
    return encoded;
}

std::wstring DecodeUrl(const std::wstring& text, bool plus)
{
    std::wstring escaped = text;
    if (plus) std::replace(escaped.begin(), escaped.end(), L'+', L' ');
    return Unescape(escaped, 0);
}

Variant SplitUrl(const std::wstring& url)
{
    if (url.empty() || !IsPlain(url)) return MakeList({});
    std::wstring_view rest = url;
    std::wstring_view scheme;
    std::wstring_view user;
    std::wstring_view password;
    std::wstring_view host;
    std::wstring_view port;

    const size_t colon = rest.find_first_of(L":/?#");
    if (colon != std::wstring_view::npos && rest[colon] == L':' && IsScheme(rest.substr(0, colon)))
        scheme = TakeThrough(rest, colon);
    if (rest.starts_with(L"//")) {
        rest.remove_prefix(2);
        host = TakeUntil(rest, L"/?#");
        user = TakeThrough(host, host.rfind(L'@'));
        const std::wstring_view credentials = user;
        user = credentials.substr(0, credentials.find(L':'));
        if (user.size() < credentials.size()) password = credentials.substr(user.size() + 1);
        // An address in brackets has colons of its own.
        const size_t end = host.starts_with(L'[') ? host.find(L']') : 0;
        const size_t mark = end == std::wstring_view::npos ? end : host.find(L':', end);
        if (mark != std::wstring_view::npos) {
            port = host.substr(mark + 1);
            host = host.substr(0, mark);
        }
    }
    const std::wstring_view path = TakeUntil(rest, L"?#");
    std::wstring_view query = TakeUntil(rest, L"#");
    if (!query.empty()) query.remove_prefix(1);
    if (!rest.empty()) rest.remove_prefix(1);

    std::vector<Variant> parts;
    for (const std::wstring_view part : {scheme, user, password, host, port, path, query, rest})
        parts.emplace_back(part);
    return MakeList(std::move(parts));
}

std::wstring CombineUrl(const std::wstring& base, const std::wstring& relative)
{
    if (!IsUsable(base) || !IsUsable(relative)) return {};
    // Either the second URL, or at most both, with what the platform escapes.
    auto size = static_cast<DWORD>(3 * (base.size() + relative.size()) + 16);
    std::wstring combined(size, L'\0');
    if (FAILED(UrlCombineW(Trimmed(base).c_str(), Trimmed(relative).c_str(), combined.data(), &size,
                           0)))
        return {};
    combined.resize(size);
    return combined;
}

std::wstring PathToUrl(const std::wstring& path)
{
    if (!IsUsable(path) || !IsFullPath(path)) return {};
    auto size = static_cast<DWORD>(3 * path.size() + 16);
    std::wstring url(size, L'\0');
    if (FAILED(UrlCreateFromPathW(path.c_str(), url.data(), &size, 0))) return {};
    url.resize(size);
    return url;
}

std::wstring UrlToPath(const std::wstring& url)
{
    if (!IsUsable(url)) return {};
    // The platform would take each byte of a character's UTF-8 for a character.
    const std::wstring readable = Unescape(url, 0x80);
    auto size = static_cast<DWORD>(readable.size() + 16);
    std::wstring path(size, L'\0');
    if (FAILED(PathCreateFromUrlW(readable.c_str(), path.data(), &size, 0))) return {};
    path.resize(size);
    return path;
}

} // namespace quill
