// Texts that may be passwords: no copy of one stays in memory as it is.
#pragma once

#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill {

// Overwrites the text with zeros, in its whole room: a short text that was moved away is still
// there.
void Wipe(std::wstring& text) noexcept;

// A text that is overwritten at the end of its scope.
class PassingText {
public:
    explicit PassingText(std::wstring given) noexcept : text(std::move(given)) { Wipe(given); }
    ~PassingText() { Wipe(text); }
    PassingText(const PassingText&) = delete;
    PassingText& operator=(const PassingText&) = delete;

    std::wstring text;
};

// The same for several.
class PassingTexts {
public:
    explicit PassingTexts(size_t room) { texts.reserve(room); }
    ~PassingTexts();
    PassingTexts(const PassingTexts&) = delete;
    PassingTexts& operator=(const PassingTexts&) = delete;

    std::vector<std::wstring> texts;
};

// A text that is kept for later, mixed with random bits.
class Secret {
public:
    explicit Secret(const std::wstring& text);
    Variant Value() const;

private:
    std::wstring mixed_, bits_;
};

} // namespace quill
