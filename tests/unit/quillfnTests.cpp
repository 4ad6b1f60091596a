#include "core/quillfn.h"

#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "core/Variant.h"
#include "support/ScriptObject.h"
#include "support/Values.h"

namespace quill::test {
namespace {

Variant ArrayOfBytes(std::vector<SAFEARRAYBOUND> dimensions)
{
    Variant array = OfType(VT_ARRAY | VT_UI1);
    V_ARRAY(&array) =
        SafeArrayCreate(VT_UI1, static_cast<UINT>(dimensions.size()), dimensions.data());
    return array;
}

TEST(ElementCount, CountsZeroBasedArraysByTheirFirstDimension)
{
    const std::pair<std::vector<SAFEARRAYBOUND>, int> cases[] = {
        {{{5, 0}}, 5},         {{{0, 0}}, 0},         {{{5, 1}}, 0},         {{{5, -5}}, 0},
        {{{3, 0}, {7, 1}}, 3}, {{{3, 1}, {7, 0}}, 0}, {{{32767, 0}}, 32767}, {{{100'000, 1}}, 0}};
    for (const auto& [dimensions, expected] : cases)
        EXPECT_EQ(ElementCount(ArrayOfBytes(dimensions)), expected) << dimensions[0].cElements;
    EXPECT_THROW(ElementCount(ArrayOfBytes({{32768, 0}})), AutomationError);
    for (const int type : {VT_ARRAY | VT_VARIANT, VT_BYREF | VT_ARRAY | VT_VARIANT,
                           VT_BYREF | VT_VARIANT, +VT_I4, +VT_EMPTY})
        EXPECT_EQ(ElementCount(OfType(static_cast<VARTYPE>(type))), 0) << type;
}

TEST(InRange, ComparesNumbersOfAllKinds)
{
    const std::pair<Variant, bool> cases[] = {
        // between 1 and 64
        {Variant(64L), true},           {Variant(65L), false},
        {Variant(SHORT(1)), true},      {Variant(64.5), false},
        {Variant(0.999), false},        {Variant(1.5), true},
        {Variant(true), false},         {Variant(), false},
        {OfType(VT_NULL), false},       {OfType(VT_DATE), false},
        {ArrayOfBytes({{5, 0}}), false}};
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(InRange(value, Variant(1L), Variant(64L)), expected) << Describe(value);
    EXPECT_TRUE(InRange(Variant(), Variant(0L), Variant(64L))); // an empty Variant is 0
}

TEST(FileExists, ResolvesBareNamesOnly)
{
    const std::wstring program = ThisApartment().programPath;
    const std::wstring folder = program.substr(0, program.find_last_of(L'\\') + 1);
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    const struct {
        std::wstring programPath, path, rewritten;
        bool expected;
    } cases[] = {
        {program, program.substr(folder.size()), program, true},
        {program, L"missing.txt", folder + L"missing.txt", false},
        {program, L"missing\\x.txt", L"missing\\x.txt", false},
        {program, L"", L"", false},
        {L"", L"missing.txt", WithTrailingBackslash(current) + L"missing.txt", false},
        {L"X:\\quill.exe", L"a.txt", L"X:\\a.txt", false},
    };
    for (const auto& [programPath, path, rewritten, expected] : cases) {
        ThisApartment().programPath = programPath;
        std::wstring tested = path;
        EXPECT_EQ(FileExists(tested, true), expected) << Narrow(path);
        EXPECT_EQ(tested, rewritten);
        tested = path;
        FileExists(tested, false);
        EXPECT_EQ(tested, path);
    }
    ThisApartment().programPath = program;
}

} // namespace
} // namespace quill::test
