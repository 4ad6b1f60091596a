// Lines and lists: text separated by CR LF, as scripts write it, and by NUL, as the platform does.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill {

inline constexpr std::wstring_view kLineBreak = L"\r\n";

// Each NUL becomes CR LF.
std::wstring NulsToLineBreaks(const std::wstring& text);

// Each CR LF becomes a NUL.
std::wstring LineBreaksToNuls(const std::wstring& text);

// The parts between the separators, which must not be empty; empty parts are kept.
std::vector<std::wstring> SplitAt(const std::wstring& text, std::wstring_view separator);

// The same at line breaks.
std::vector<std::wstring> SplitLines(const std::wstring& text);

// At most the first `limit` units; a surrogate pair is not split, for half of one shows as a box.
std::wstring_view CutForDisplay(std::wstring_view text, size_t limit) noexcept;

// The bytes of a text in one of the platform's code pages, and the text of such bytes. What the
// code page lacks becomes its replacement character. Empty for an unknown code page.
std::string Encode(std::wstring_view text, unsigned codePage);
std::wstring Decode(std::string_view bytes, unsigned codePage);

// The same in the system's ANSI code page.
std::string ToAnsi(std::wstring_view text);
std::wstring FromAnsi(std::string_view bytes);

// In upper case by the platform's own table, whatever the user's language.
std::wstring UpperCase(std::wstring text);

// True when the text is like the pattern, where * stands for any text and ? for one character.
// Takes time in proportion to both lengths, whatever the pattern; the platform's own routine takes
// exponential time on many stars.
bool IsLike(std::wstring_view text, std::wstring_view pattern) noexcept;

// The same for masks, where # stands for a digit (0 to 9), ? for a letter and * for any text.
bool FitsMask(std::wstring_view text, std::wstring_view mask) noexcept;

// What stands between a number's whole part and its fraction, as the user has set it.
std::wstring UserDecimal();

// The number that a text is: a sign, digits with `decimal` or a point among them, and a power of
// ten such as E-3; spaces around them do not count. Nothing for any other text and beyond what a
// double holds.
std::optional<double> NumberOf(std::wstring_view text, std::wstring_view decimal);

} // namespace quill
