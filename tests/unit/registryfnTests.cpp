#include "core/Text.h"
#include "services/registryfn.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(RegistryFn, Wildcards)
{
    using Pairs = std::vector<std::pair<const wchar_t*, const wchar_t*>>;
    const Pairs like = {
        {L"", L""},
        {L"", L"**"},
        {L"ABC", L"ABC"},
        {L"ABC", L"A?C"},
        {L"ABC", L"A*"},
        {L"ABC", L"*C"},
        {L"ABC", L"*B*"},
        {L"ABC", L"ABC*"},
        {L"AXBXC", L"A*X*C"},
        {L"A*C", L"A?C"},
        {L"MISSISSIPPI", L"*ISS*IP*"},
        {L"ABABC", L"*ABC"},  // the first place that fits is not the right one
        {L"[A].+", L"[A].+"}, // nothing else has a meaning
    };
    const Pairs unlike = {
        {L"", L"?"},        {L"A", L""},          {L"ABC", L"AB"},
        {L"AB", L"ABC"},    {L"ABC", L"ABC?"},    {L"ABC", L"*D*"},
        {L"ABAB", L"*ABC"}, {L"AXBXD", L"A*X*C"}, {L"MISSISSIPPI", L"*IS?P*I?"},
    };
    for (const auto& [text, pattern] : like)
        EXPECT_TRUE(IsLike(text, pattern)) << text << L" like " << pattern;
    for (const auto& [text, pattern] : unlike)
        EXPECT_FALSE(IsLike(text, pattern)) << text << L" like " << pattern;
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
