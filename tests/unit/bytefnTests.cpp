#include "services/bytefn.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

using namespace std::literals;
using Bytes = std::vector<BYTE>;

constexpr ByteForm kPlain{};
constexpr ByteForm kTwisted{.twistEndian = true};
constexpr ByteForm kUnicode{.useUnicode = true};
constexpr ByteForm kHexstring{.useHexstring = true};
constexpr ByteForm kEverything{true, true, true};

std::optional<Bytes> Converted(const VARIANT& value, const ByteForm& form)
{
    Bytes storage;
    const auto bytes = BytesOf(value, form, storage);
    if (!bytes) return {};
    return Bytes(bytes->begin(), bytes->end());
}

// A value of a type that has no constructor.
Variant Typed(VARTYPE type, std::int64_t bits)
{
    Variant value;
    memcpy(&V_UI1(&value), &bits, sizeof bits);
    V_VT(&value) = type;
    return value;
}

TEST(ByteFn, NumbersInBothOrders)
{
    const struct {
        Variant value;
        Bytes expected;
    } cases[] = {
        {Typed(VT_UI1, 0xFE), {0xFE}},
        {Typed(VT_I2, 0x0102), {2, 1}},
        {Typed(VT_I4, -2), {0xFE, 0xFF, 0xFF, 0xFF}},
        {Typed(VT_R4, 0x3F800001), {1, 0, 0x80, 0x3F}},
        {Typed(VT_R8, 0x3FF0000000000001), {1, 0, 0, 0, 0, 0, 0xF0, 0x3F}},
        {Typed(VT_CY, 0x0102030405060708), {8, 7, 6, 5, 4, 3, 2, 1}},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(Converted(value, kPlain), expected) << V_VT(&value);
        EXPECT_EQ(Converted(value, kTwisted), Bytes(expected.rbegin(), expected.rend()))
            << V_VT(&value);
    }
}

TEST(ByteFn, Text)
{
    const struct {
        std::wstring text;
        ByteForm form;
        std::optional<Bytes> expected;
    } cases[] = {
        {L"", kPlain, Bytes{}},
        {L"a\0b"s, kPlain, Bytes{'a', 0, 'b'}},
        {L"\u4E2D", kPlain, Bytes{'?'}}, // outside the code page
        {L"ab", kTwisted, Bytes{'a', 'b'}},
        {L"a\u4E2D\0"s, kUnicode, Bytes{'a', 0, 0x2D, 0x4E, 0, 0}},
        {L"&H4142", kPlain, Bytes{'&', 'H', '4', '1', '4', '2'}},
        {L"&H4142", kHexstring, Bytes{0x41, 0x42}},
        {L"&haBcD", kEverything, Bytes{0xAB, 0xCD}},
        {L"&HABC", kHexstring, Bytes{0xAB, 0xC0}},
        {L"&H1ZZ1ZZ\0\0 2G"s, kHexstring, Bytes{0x01, 0x00, 0x00, 0x00, 0x00, 0x00}},
        {L"&H1", kHexstring, Bytes{0x10}},
        {L"&H", kHexstring, {}},
        {L"&", kHexstring, Bytes{'&'}},
        {L"&X41", kHexstring, Bytes{'&', 'X', '4', '1'}},
        {L"", kHexstring, Bytes{}},
    };
    for (const auto& [text, form, expected] : cases)
        EXPECT_EQ(Converted(Variant(text), form), expected)
            << std::string(text.begin(), text.end());
    EXPECT_EQ(Converted(Typed(VT_BSTR, 0), kPlain), Bytes{}) << "null";
}

TEST(ByteFn, ArraysStayWhereTheyAre)
{
    SAFEARRAYBOUND bound{3, -5};
    Array array(SafeArrayCreate(VT_UI1, 1, &bound));
    memcpy(array->pvData, "abc", 3);
    Variant value;
    V_ARRAY(&value) = array.get();
    V_VT(&value) = VT_ARRAY | VT_UI1;
    Variant reference;
    V_VARIANTREF(&reference) = &value;
    V_VT(&reference) = VT_BYREF | VT_VARIANT;
    Bytes storage;
    const auto bytes = BytesOf(reference, kEverything, storage);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->data(), array->pvData);
    EXPECT_EQ(bytes->size(), 3u);
    V_VT(&value) = VT_EMPTY;

    EXPECT_EQ(Converted(Variant(MakeArray(VT_UI1, 0)), kPlain), Bytes{});
}

TEST(ByteFn, OtherTypesHaveNoBytes)
{
    for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_ERROR, VT_BOOL, VT_DATE, VT_I1, VT_UI2, VT_UI4,
                               VT_I8, VT_UI8, VT_INT, VT_UINT, VT_DECIMAL, VT_DISPATCH})
        EXPECT_FALSE(Converted(Typed(type, 0), kPlain)) << type;
    EXPECT_FALSE(Converted(Typed(VT_ARRAY | VT_UI1, 0), kPlain)) << "an array that is not there";
    for (const VARTYPE type : {VT_VARIANT, VT_I2, VT_I1, VT_BSTR})
        EXPECT_FALSE(Converted(Variant(MakeArray(type, 2)), kPlain)) << type;
    SAFEARRAYBOUND bounds[]{{2, 0}, {2, 0}};
    EXPECT_FALSE(Converted(Variant(Array(SafeArrayCreate(VT_UI1, 2, bounds))), kPlain));
}

} // namespace
} // namespace quill::test
