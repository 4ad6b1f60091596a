#include "core/quillfn.h"

#include <gtest/gtest.h>

#include <optional>

#include "core/Apartment.h"
#include "core/Variant.h"
#include "support/ScriptObject.h"
#include "support/Values.h"

namespace quill::test {
namespace {

// An array of bytes with these dimensions, first to last.
Variant MakeArray(std::vector<SAFEARRAYBOUND> dimensions)
{
    Variant array;
    V_VT(&array) = VT_ARRAY | VT_UI1;
    V_ARRAY(&array) =
        SafeArrayCreate(VT_UI1, static_cast<UINT>(dimensions.size()), dimensions.data());
    return array;
}

TEST(ElementCount, CountsZeroBasedArraysByTheirFirstDimension)
{
    const struct {
        std::vector<SAFEARRAYBOUND> dimensions; // {elements, lower bound}
        std::optional<short> expected;          // none: overflow
    } cases[] = {
        {{{5, 0}}, 5},         {{{1, 0}}, 1},         {{{0, 0}}, 0},         {{{5, 1}}, 0},
        {{{5, -5}}, 0},        {{{3, 0}, {7, 0}}, 3}, {{{3, 0}, {7, 1}}, 3}, {{{3, 1}, {7, 0}}, 0},
        {{{32767, 0}}, 32767}, {{{32768, 0}}, {}},    {{{100'000, 0}}, {}},  {{{100'000, 1}}, 0},
    };
    for (const auto& [dimensions, expected] : cases) {
        Variant array = MakeArray(dimensions);
        const Variant byReference = Reference(VT_ARRAY | VT_UI1, &V_ARRAY(&array));
        const Variant variable = Reference(VT_VARIANT, &array);
        for (const Variant* form : {&std::as_const(array), &byReference, &variable}) {
            try {
                EXPECT_EQ(ElementCount(*form), expected) << dimensions[0].cElements;
            } catch (const AutomationError& error) {
                EXPECT_EQ(error.number, ErrorNumber(0x800A0006));
                EXPECT_FALSE(expected);
            }
        }
    }
}

TEST(ElementCount, IsZeroForWhatIsNoArray)
{
    for (const int type : {VT_ARRAY | VT_VARIANT, VT_BYREF | VT_ARRAY | VT_VARIANT,
                           VT_BYREF | VT_VARIANT, +VT_I4, +VT_EMPTY})
        EXPECT_EQ(ElementCount(OfType(static_cast<VARTYPE>(type))), 0) << type;
}

TEST(InRange, ComparesNumbersOfAllKinds)
{
    const struct {
        Variant value;
        bool expected; // between 1 and 64
    } cases[] = {
        {Variant(1L), true},      {Variant(64L), true},         {Variant(0L), false},
        {Variant(65L), false},    {Variant(SHORT(64)), true},   {Variant(64.5), false},
        {Variant(0.999), false},  {Variant(1.5), true},         {Variant(true), false},
        {Variant(), false},       {OfType(VT_NULL), false},     {OfType(VT_DATE), false},
        {Variant(L"abc"), false}, {MakeArray({{5, 0}}), false},
    };
    const Variant low(1L);
    const Variant high(64L);
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(InRange(value, low, high), expected)
            << V_VT(&value) << ' ' << V_R8(&value) << ' ' << V_I4(&value);
    EXPECT_TRUE(InRange(Variant(), Variant(0L), high)); // an empty Variant is 0
    EXPECT_TRUE(InRange(64, 1, 64));
    EXPECT_FALSE(InRange(65, 1, 64));
    EXPECT_FALSE(InRange(0, 1, 64));
}

TEST(FileExists, ResolvesBareNamesOnly)
{
    const std::wstring program = ThisApartment().programPath;
    const std::wstring name = program.substr(program.find_last_of(L'\\') + 1);
    const std::wstring folder = program.substr(0, program.find_last_of(L'\\') + 1);
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);

    const struct {
        std::wstring programPath;
        std::wstring path;
        std::wstring rewritten;
        bool expected;
    } cases[] = {
        {program, name, program, true},
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
