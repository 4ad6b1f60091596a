#include "core/Text.h"
#include "services/registryfn.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(RegistryFn, Wildcards)
{
    const struct {
        const wchar_t* text;
        const wchar_t* pattern;
        bool expected;
    } cases[] = {
        {L"", L"", true},
        {L"", L"*", true},
        {L"", L"**", true},
        {L"", L"?", false},
        {L"A", L"", false},
        {L"ABC", L"ABC", true},
        {L"ABC", L"AB", false},
        {L"AB", L"ABC", false},
        {L"ABC", L"A?C", true},
        {L"ABC", L"ABC?", false},
        {L"ABC", L"A*", true},
        {L"ABC", L"*C", true},
        {L"ABC", L"*B*", true},
        {L"ABC", L"*D*", false},
        {L"ABC", L"ABC*", true},
        {L"ABABC", L"*ABC", true}, // the first place that fits is not the right one
        {L"ABAB", L"*ABC", false},
        {L"AXBXC", L"A*X*C", true},
        {L"AXBXD", L"A*X*C", false},
        {L"A*C", L"A?C", true},
        {L"MISSISSIPPI", L"*ISS*IP*", true},
        {L"MISSISSIPPI", L"*IS?P*I?", false},
        {L"[A].+", L"[A].+", true}, // nothing else has a meaning
    };
    for (const auto& [text, pattern, expected] : cases)
        EXPECT_EQ(IsLike(text, pattern), expected)
            << std::string(text, text + wcslen(text)) << " like "
            << std::string(pattern, pattern + wcslen(pattern));
}

TEST(RegistryFn, AManyStarredPatternTakesNoTime)
{
    std::wstring pattern;
    for (int count = 0; count < 200; ++count)
        pattern += L"*A";
    EXPECT_FALSE(IsLike(std::wstring(16'383, L'A'), pattern + L"*B"));
}

} // namespace
} // namespace quill::test
