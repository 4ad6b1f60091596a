#include <gtest/gtest.h>

#include <cmath>

#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"
#include "support/Values.h"

namespace quill::test {
namespace {

using namespace std::literals;
using Texts = std::vector<std::wstring>;

Variant Numbers(std::initializer_list<double> numbers)
{
    Array array = MakeArray(VT_R8, numbers.size());
    std::copy(numbers.begin(), numbers.end(), DataOf<double>(*array).begin());
    return Variant(std::move(array));
}

// The elements of a result, which must be a zero-based array of Variants.
Texts TextsOf(const Value& result)
{
    if (V_VT(&result) != (VT_ARRAY | VT_VARIANT) || V_ARRAY(&result)->cDims != 1 ||
        V_ARRAY(&result)->rgsabound[0].lLbound != 0)
        throw std::logic_error("no list but type " + std::to_string(V_VT(&result)));
    Texts texts;
    for (const VARIANT& element : DataOf<VARIANT>(*V_ARRAY(&result)))
        texts.push_back(V_VT(&element) == VT_DISPATCH ? L"<object>"
                        : V_VT(&element) == VT_NULL   ? L"<null>"
                                                      : ToText(element));
    return texts;
}

class AuxTest : public testing::Test {
protected:
    template <class... Arguments>
    std::wstring Text(const wchar_t* name, Arguments&&... arguments)
    {
        return aux_.Call(name, std::forward<Arguments>(arguments)...).Text();
    }
    template <class... Arguments>
    Texts Items(const wchar_t* name, Arguments&&... arguments)
    {
        return TextsOf(aux_.Call(name, std::forward<Arguments>(arguments)...));
    }
    template <class... Arguments>
    std::string Bytes(const wchar_t* name, Arguments&&... arguments)
    {
        return BytesOf(aux_.Call(name, std::forward<Arguments>(arguments)...));
    }

    ScriptObject aux_ = ScriptObject::Make(L"Aux");
};

TEST_F(AuxTest, NumbersBecomeText)
{
    EXPECT_EQ(Text(L"Hex64", Currency(4'294'967'296)), L"100000000");
    EXPECT_EQ(Text(L"Hex64", Currency(-1)), L"FFFFFFFFFFFFFFFF");
    EXPECT_EQ(Text(L"FormatByteSize", 1536), L"1.50 KB");
    EXPECT_EQ(Text(L"FormatByteSize", 5368709120.0), L"5.00 GB");
    EXPECT_EQ(Text(L"FormatByteSize", -1), L"");
}

TEST_F(AuxTest, TextGoesThroughCodePages)
{
    const std::wstring text = L"a\0\u00E9\u20AC\U0001F600"s;
    const struct {
        Arg codePage;
        std::string bytes;
        std::wstring back;
    } cases[] = {
        {Missing(), "a\0\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"s, text},
        {1252, "a\0\xE9\x80??"s, L"a\0\u00E9\u20AC??"s},
        {1200, "a\0\0\0\xE9\0\xAC\x20\x3D\xD8\0\xDE"s, text},
        {1201, "\0a\0\0\0\xE9\x20\xAC\xD8\x3D\xDE\0"s, text},
        {-1, "", L""},
    };
    for (const auto& [codePage, bytes, back] : cases) {
        EXPECT_EQ(Bytes(L"TextToBytes", text, codePage.value), bytes);
        EXPECT_EQ(Text(L"BytesToText", ByteArray(bytes), codePage.value), back);
    }
    EXPECT_EQ(Text(L"BytesToText", ByteArray("a\xFFz")), L"a\uFFFDz");
    EXPECT_EQ(Text(L"BytesToText", ByteArray("a\0z"s), 1200), L"a\uFFFD");
}

TEST_F(AuxTest, BytesComeInManyForms)
{
    Variant bytes = ByteArray("AB");
    EXPECT_EQ(Text(L"EncodeHex", &bytes), L"4142");
    EXPECT_EQ(Text(L"EncodeHex", L"\u20AC"), L"E282AC");
    EXPECT_EQ(Text(L"EncodeHex", Numbers({0, 127, 255})), L"007FFF");
    EXPECT_EQ(Text(L"EncodeHex", ScriptArray(short{1}, 2, 3.0, L"4", Variant())), L"0102030400");
    for (const Variant& data : {Variant(), ByteArray("")})
        EXPECT_EQ(Text(L"Hash", data, L"MD5"), L"D41D8CD98F00B204E9800998ECF8427E");
    for (const Variant& data :
         {Numbers({-1}), Numbers({256}), Numbers({0.5}), Numbers({std::nan("")}), ScriptArray(L"x"),
          ScriptArray(OfType(VT_NULL)), ScriptArray(ScriptArray(1)), Variant(42L),
          Variant(aux_.Dispatch())}) {
        EXPECT_EQ(Text(L"EncodeHex", data), L"");
        EXPECT_EQ(Text(L"Hash", data), L"");
    }
}

TEST_F(AuxTest, HexadecimalAndBase64ComeBack)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (size_t size : {1u, 2u, 3u, 256u}) {
        const Variant data = ByteArray(all.substr(0, size));
        EXPECT_EQ(Bytes(L"DecodeHex", Text(L"EncodeHex", data)), all.substr(0, size));
        const std::wstring base64 = Text(L"EncodeBase64", data);
        EXPECT_EQ(Bytes(L"DecodeBase64", base64), all.substr(0, size));
        EXPECT_EQ(base64.find_first_of(L"\r\n\0"s), std::wstring::npos);
    }
    EXPECT_EQ(Text(L"EncodeBase64", L"hello?>"), L"aGVsbG8/Pg==");
    EXPECT_EQ(Bytes(L"DecodeBase64", L" aGVs\r\nbG8/\tPg==\n"), "hello?>");
    EXPECT_EQ(Bytes(L"DecodeHex", L"\r\n4a 4B\t6c"), "JKl");
    for (const std::wstring& wrong : {L"4 1"s, L"4g"s, L"41\0"s})
        EXPECT_EQ(Bytes(L"DecodeHex", wrong), "") << Narrow(wrong);
    for (const std::wstring& wrong : {L"a*bc"s, L"aGVs\0"s, L" "s})
        EXPECT_EQ(Bytes(L"DecodeBase64", wrong), "") << Narrow(wrong);
}

TEST_F(AuxTest, HashesAreTheWellKnownOnes)
{
    const TemporaryFolder folder;
    const std::string large(200'000, 'a'); // more than is read at a time
    const struct {
        const wchar_t *algorithm, *ofAbc, *ofLarge;
    } cases[] = {
        {L"md5", L"900150983CD24FB0D6963F7D28E17F72", L"561B1994F6BAACD6E5EAF4BAAA12849F"},
        {L"SHA-1", L"A9993E364706816ABA3E25717850C26C9CD0D89D",
         L"EC99ADDA39F462070E2C7ECBC8433E70DC9FB54C"},
        {L"SHA256", L"BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD",
         L"2287D207F24A941FF3B56C04C8A25AD56B63E3023207B3BB5B4AC0C9869D74BE"},
    };
    const std::wstring abc = folder.Write(L"abc", "abc");
    const std::wstring many = folder.Write(L"large", large);
    for (const auto& [algorithm, ofAbc, ofLarge] : cases) {
        EXPECT_EQ(Text(L"Hash", L"abc", algorithm), ofAbc);
        EXPECT_EQ(Text(L"Hash", ByteArray(large), algorithm), ofLarge);
        EXPECT_EQ(Text(L"HashFile", many, algorithm), ofLarge);
    }
    EXPECT_EQ(Text(L"HashFile", abc), cases[2].ofAbc);
    EXPECT_EQ(Text(L"Hash", L"abc", L"SHA"), L"");
    for (const std::wstring& path : {folder.Path(L""), abc + L'\0', L"abc"s, L""s, L"CON"s})
        EXPECT_EQ(Text(L"HashFile", path), L"") << Narrow(path);
}

// Arrays that are not as scripts make them.
TEST_F(AuxTest, ArraysOfEveryKindBecomeLists)
{
    const Variant low = StartingAt(-5, ScriptArray(short{-50}, -40, L"-30"));
    EXPECT_EQ(Items(L"VariantArray", low), (Texts{L"-50", L"-40", L"-30"}));
    EXPECT_EQ(aux_.Call(L"Find", low, -30), 2);
    Variant typed = ByteArray("\1\2");
    EXPECT_EQ(Items(L"VariantArray", &typed), (Texts{L"1", L"2"})); // a script's own variable
    // What its language passes for an array it declared itself.
    EXPECT_EQ(Items(L"VariantArray", Reference(VT_ARRAY | VT_UI1, &V_ARRAY(&typed))),
              (Texts{L"1", L"2"}));
    for (const Variant& none : {Square(), Variant(), OfType(VT_ARRAY | VT_VARIANT), Variant(7L)})
        EXPECT_EQ(Items(L"VariantArray", none), Texts());
    EXPECT_EQ(Text(L"Join", Square(), L","), L"");
}

TEST_F(AuxTest, ListsBecomeTypedArrays)
{
    const Variant numbers = ScriptArray(1, 2.0, short{3});
    for (const VARTYPE type : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_I8, VT_UI8, VT_R4,
                               VT_R8, VT_CY, VT_DATE, VT_DECIMAL, VT_INT, VT_UINT}) {
        const Value typed = aux_.Call(L"TypedArray", numbers, static_cast<int>(type));
        ASSERT_EQ(V_VT(&typed), VT_ARRAY | type);
        const Value back = aux_.Call(L"VariantArray", typed);
        LONG expected = 0;
        for (VARIANT& element : DataOf<VARIANT>(*V_ARRAY(&back))) {
            Variant number;
            EXPECT_EQ(V_VT(&element), type);
            ASSERT_HRESULT_SUCCEEDED(VariantChangeType(&number, &element, 0, VT_I4)) << type;
            EXPECT_EQ(V_I4(&number), ++expected) << type;
        }
        EXPECT_EQ(expected, 3);
    }
    const Value texts = aux_.Call(L"TypedArray", ScriptArray(L"1", 2.0, true), VT_BSTR);
    EXPECT_EQ(Items(L"VariantArray", texts), (Texts{L"1", L"2", L"True"}));
    EXPECT_EQ(Bytes(L"TypedArray", ScriptArray(1, 256), VT_UI1), "");
    for (int type : {-1, 0, 1, 9, 10, 12, 13, 36, 0x2003, 0x4003})
        EXPECT_EQ(Items(L"TypedArray", numbers, type), Texts()) << type;
}

TEST_F(AuxTest, SortsTextAsTheUsersLanguage)
{
    const Variant words =
        MakeStringArray(Texts{L"zebra", L"\u00E4pfel", L"Apfel", L"", L"apfel", L"Zebra"}, true);
    EXPECT_EQ(Items(L"Sort", words),
              (Texts{L"", L"apfel", L"Apfel", L"\u00E4pfel", L"zebra", L"Zebra"}));
    EXPECT_EQ(Items(L"Sort", words, false, true),
              (Texts{L"Zebra", L"zebra", L"\u00E4pfel", L"Apfel", L"apfel", L""}));
    EXPECT_EQ(Items(L"Sort", MakeStringArray(Texts{L"b\0b"s, L"b\0a"s}, true)),
              (Texts{L"b\0a"s, L"b\0b"s}));
    EXPECT_EQ(Items(L"Sort", ScriptArray(10, 9, L"1")), (Texts{L"1", L"10", L"9"}));
}

TEST_F(AuxTest, SortsNumbersAndKeepsEqualOnesInTheirOrder)
{
    EXPECT_EQ(Items(L"Sort", ScriptArray(10, L"9", -1.5, true), true),
              (Texts{L"-1.5", L"True", L"9", L"10"}));
    const Variant equal = ScriptArray(L"2", 1, 2.0, L"1.0", L" 2");
    EXPECT_EQ(Items(L"Sort", equal, true), (Texts{L"1", L"1.0", L"2", L"2", L" 2"}));
    EXPECT_EQ(Items(L"Sort", equal, true, true), (Texts{L"2", L"2", L" 2", L"1", L"1.0"}));

    // What has no place in the order stands at the end, whatever the direction, and is not lost.
    const Variant mixed =
        ScriptArray(OfType(VT_NULL), 2, aux_.Dispatch(), std::nan(""), L"x", 1, OfType(VT_EMPTY));
    EXPECT_EQ(Items(L"Sort", mixed, true).size(), 7u);
    const Texts rest{L"<null>", L"<object>"};
    for (bool descending : {false, true}) {
        const Texts sorted = Items(L"Sort", mixed, true, descending);
        EXPECT_EQ((Texts{sorted[3], sorted[4], sorted[6]}), (Texts{rest[0], rest[1], L"x"}));
        EXPECT_EQ(sorted[1], L"1");
        const Texts texts = Items(L"Sort", mixed, false, descending);
        EXPECT_EQ(Texts(texts.end() - 2, texts.end()), rest);
    }
}

TEST_F(AuxTest, FindsJoinsAndSplits)
{
    const Variant list = ScriptArray(L"a", 1, L"A", L"1", OfType(VT_NULL), L"a", aux_.Dispatch());
    EXPECT_EQ(Items(L"Unique", list), (Texts{L"a", L"1", L"A", L"<null>", L"<object>"}));
    EXPECT_EQ(Items(L"Unique", list, true), (Texts{L"a", L"1", L"<null>", L"<object>"}));
    const struct {
        Arg value;
        int start;
        bool ignoreCase;
        int expected;
    } cases[] = {
        {L"A", 0, false, 2},  {L"A", 0, true, 0},  {L"a", 1, true, 2},
        {L"a", 3, false, 5},  {1, 2, false, 3},    {L"b", 0, true, -1},
        {L"a", -1, true, -1}, {L"a", 7, true, -1}, {OfType(VT_NULL), 0, false, -1},
    };
    for (const auto& [value, start, ignoreCase, expected] : cases)
        EXPECT_EQ(aux_.Call(L"Find", list, value.value, start, ignoreCase), expected) << start;

    EXPECT_EQ(Text(L"Join", list, L", "), L"a, 1, A, 1, , a, ");
    EXPECT_EQ(Items(L"Split", L"a, b, , c", L", "), (Texts{L"a", L"b", L"", L"c"}));
    EXPECT_EQ(Items(L"Split", L"a\0b"s, L"\0"s), (Texts{L"a", L"b"}));
    EXPECT_EQ(Items(L"Split", L"ab", L""), Texts{L"ab"});
    EXPECT_EQ(Items(L"Split", L"", L","), Texts());
}

TEST_F(AuxTest, UrlsAreEncodedInUtf8)
{
    const std::wstring text = L"a b+c/\u20AC~\0%\U0001F600"s;
    EXPECT_EQ(Text(L"EncodeUrl", text), L"a%20b%2Bc%2F%E2%82%AC~%00%25%F0%9F%98%80");
    EXPECT_EQ(Text(L"EncodeUrl", text, true), L"a+b%2Bc%2F%E2%82%AC~%00%25%F0%9F%98%80");
    for (bool plus : {false, true})
        EXPECT_EQ(Text(L"DecodeUrl", Text(L"EncodeUrl", text, plus), plus), text);
    EXPECT_EQ(Text(L"DecodeUrl", L"1+1%"), L"1+1%");
    EXPECT_EQ(Text(L"DecodeUrl", L"%e2%82%ac\u20AC%zz"), L"\u20AC\u20AC%zz");
    EXPECT_EQ(Text(L"DecodeUrl", L"%E2%82x"), L"\uFFFDx");
}

TEST_F(AuxTest, UrlsHaveParts)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"https://me:se:cret@example.com:8080/a/b?x=1&y=/?#top?#",
         L"https|me|se:cret|example.com|8080|/a/b|x=1&y=/?|top?#"},
        {L"http://[::1]:80", L"http|||[::1]|80|||"},
        {L"http://[::1", L"http|||[::1||||"},
        {L"ftp://a@b@host", L"ftp|a@b||host||||"},
        {L"mailto:a@b.c", L"mailto|||||a@b.c||"},
        {L"//host?q", L"|||host|||q|"},
        {L"../a:b", L"|||||../a:b||"},
        {L":", L"|||||:||"},
        {L"", L""},
    };
    for (const auto& [url, parts] : cases)
        EXPECT_EQ(Text(L"Join", aux_.Call(L"SplitUrl", url), L"|"), parts) << Narrow(url);
    EXPECT_EQ(Items(L"SplitUrl", L"a\0b"s), Texts());

    EXPECT_EQ(Text(L"CombineUrl", L"http://host/a/b.htm?x", L"../c.htm"), L"http://host/c.htm");
    EXPECT_EQ(Text(L"CombineUrl", L"http://host/a", L"https://other/"), L"https://other/");
    EXPECT_EQ(Text(L"CombineUrl", L"http://host/a", L"b\0c"s), L"");
    EXPECT_EQ(Text(L"CombineUrl", L"\t", L" c.htm\r\n"), L"c.htm") << "blanks count for nothing";
    const std::wstring longest = L"http://host/" + std::wstring(2083 - 12, L'%');
    EXPECT_NE(Text(L"CombineUrl", longest, longest), L"");
    EXPECT_EQ(Text(L"CombineUrl", L"http://host/", longest + L'%'), L"");
}

TEST_F(AuxTest, PathsBecomeUrlsAndComeBack)
{
    EXPECT_EQ(Text(L"PathToUrl", LR"(C:\a b\c#d.txt)"), L"file:///C:/a%20b/c%23d.txt");
    for (const wchar_t* path : {LR"(C:\a b\c%20#d.txt)", LR"(\\server\share\x)", L"C:\\\u20AC"})
        EXPECT_EQ(Text(L"UrlToPath", Text(L"PathToUrl", path)), path);
    EXPECT_EQ(Text(L"UrlToPath", L"file:///C:/%E2%82%AC%20x"), L"C:\\\u20AC x");
    for (const std::wstring& wrong : {L"http://host/"s, L"C:\\x"s, L""s, L"file:///C:/a\0b"s})
        EXPECT_EQ(Text(L"UrlToPath", wrong), L"") << Narrow(wrong);
    for (const std::wstring& wrong : {L"a.txt"s, L""s, L"C:\\a\0"s})
        EXPECT_EQ(Text(L"PathToUrl", wrong), L"") << Narrow(wrong);
}

TEST_F(AuxTest, PathsAreCombinedAndResolved)
{
    const std::wstring longName(300, L'x');
    const struct {
        const wchar_t* method;
        std::wstring first, second, expected;
    } cases[] = {
        {L"CombinePath", LR"(C:\a\)", LR"(..\b)", LR"(C:\b)"},
        {L"CombinePath", LR"(C:\a)", LR"(\b)", LR"(C:\b)"},
        {L"CombinePath", LR"(C:\a)", LR"(D:\b)", LR"(D:\b)"},
        {L"CombinePath", L"C:\\a\0"s, L"b", L""},
        {L"FullPath", LR"(b/./c\..\d)", LR"(C:\a)", LR"(C:\a\b\d)"},
        {L"FullPath", LR"(C:\x\..\y)", L"", LR"(C:\y)"},
        {L"FullPath", L"/b", L"C:/a", LR"(C:\b)"},
        {L"FullPath", L"b", L"a", L""},
        {L"FullPath", L"", LR"(C:\a)", L""},
        {L"RelativePath", LR"(C:\a\b\c.txt)", LR"(C:\a\d)", LR"(..\b\c.txt)"},
        {L"RelativePath", LR"(D:\a)", LR"(C:\a)", L""},
        {L"RelativePath", L"C:\\" + longName, LR"(C:\a)", L""},
    };
    for (const auto& [method, first, second, expected] : cases)
        EXPECT_EQ(Text(method, first, second), expected) << Narrow(first) << ' ' << Narrow(second);
    EXPECT_TRUE(Text(L"CombinePath", LR"(C:\a)", longName).ends_with(longName));

    // The deepest way up that two paths of the platform's length can ask for.
    std::wstring deep = L"C:";
    while (deep.size() < 257)
        deep += L"\\a";
    const std::wstring up = Text(L"RelativePath", LR"(C:\b)", deep);
    EXPECT_TRUE(up.empty() || up.ends_with(LR"(\..\b)")) << Narrow(up); // as the platform likes

    const std::wstring path = LR"(C:\folder\another folder\file.txt)";
    EXPECT_EQ(Text(L"CompactPath", path, 20).size(), 20u);
    EXPECT_NE(Text(L"CompactPath", path, 20).find(LR"(...\file.txt)"), std::wstring::npos);
    for (const auto& [width, compact] : {std::pair{INT_MAX, path}, {0, L""s}, {INT_MIN, L""s}})
        EXPECT_EQ(Text(L"CompactPath", path, width), compact);
    EXPECT_EQ(Text(L"CompactPath", longName, 299), L"");
}

TEST_F(AuxTest, PathsHaveALongAndAShortForm)
{
    const TemporaryFolder folder;
    const std::wstring path = folder.Write(L"a rather long name.text", "");
    EXPECT_TRUE(
        Text(L"LongPath", Text(L"ShortPath", path)).ends_with(L"\\a rather long name.text"));
    for (const std::wstring& wrong : {folder.Path(L"none"), L"."s, L""s, path + L'\0'})
        EXPECT_EQ(Text(L"ShortPath", wrong) + Text(L"LongPath", wrong), L"");
}

TEST_F(AuxTest, NamesMatchPatterns)
{
    const std::tuple<std::wstring, const wchar_t*, bool> cases[] = {
        {L"Report.TXT", L"*.txt", true},
        {L"report", L"*.*", true},
        {L"report", L"r?p*t", true},
        {L"report", L"r?port?", false},
        {L"a.bmp", L"*.txt; *.bmp", true},
        {L"a.bmpx", L"*.txt;*.bmp", false},
        {L"aXbXc", L"a*b*c", true},
        {L"", L"", true},
        {L"a", L"", false},
        {L"\u00C4", L"\u00E4", true},
        {L"a\0b"s, L"a?b", true},
        {std::wstring(30'000, L'a'), L"*a*a*a*a*a*a*b", false},
        {std::wstring(40'000, L'a'), L"*", false}, // no path is as long
    };
    for (const auto& [name, pattern, expected] : cases)
        EXPECT_EQ(aux_.Call(L"MatchName", name, pattern), expected) << Narrow(pattern);
}

TEST_F(AuxTest, ReadsTextAsACommandLineWould)
{
    SetEnvironmentVariableW(L"QUILL_TEST", std::wstring(1000, L'v').c_str());
    EXPECT_EQ(Text(L"ExpandEnvironment", L"<%QUILL_TEST%>%none%"),
              L'<' + std::wstring(1000, L'v') + L">%none%");
    SetEnvironmentVariableW(L"QUILL_TEST", std::wstring(MAX_PATH - 1, L'v').c_str());
    EXPECT_EQ(Text(L"ExpandEnvironment", L"%quill_test%"), std::wstring(MAX_PATH - 1, L'v'));
    SetEnvironmentVariableW(L"QUILL_TEST", nullptr);
    EXPECT_EQ(Text(L"ExpandEnvironment", L"a\0b"s), L"");

    EXPECT_EQ(Items(L"SplitCommandLine", LR"( "C:\my tools\x.exe" /a "b c" "say \"hi\"" d\)"),
              (Texts{LR"(C:\my tools\x.exe)", L"/a", L"b c", LR"(say "hi")", LR"(d\)"}));
    for (const std::wstring& none : {L" \t"s, L"a\0b"s})
        EXPECT_EQ(Items(L"SplitCommandLine", none), Texts());
}

} // namespace
} // namespace quill::test
