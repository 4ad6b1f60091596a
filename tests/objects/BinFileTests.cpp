#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"
#include "support/Values.h"

namespace quill::test {
namespace {

using namespace std::literals;

constexpr std::int64_t kLargestCount = 922'337'203'685'477;

ScriptError Error(unsigned number, const std::wstring& description)
{
    return {number, L"Quill.BinFile", description};
}
const ScriptError kNoWriteAccess = Error(0x8004034C, L"Write access not permitted.");
const ScriptError kSizeUndefined = Error(0x8004034D, L"Number of bytes to read is undefined.");
const ScriptError kSizeMismatch =
    Error(0x8004034E, L"Write data do not match the requested number of bytes.");
const ScriptError kUnusable = Error(0x8004034E, L"Could not prepare write data.");
const ScriptError kLocationNotSet = Error(0x80040350, L"Could not set the assigned file pointer.");
const ScriptError kWrongType = Error(0x80040360, L"Wrong argument (wrong Variant type)");
ScriptError WrongProperty(const std::wstring& name)
{
    return Error(0x80040361, L"Wrong property value: " + name);
}

Arg Count(std::int64_t count)
{
    return Currency(count * 10'000);
}

class BinFileTest : public testing::Test {
protected:
    ScriptObject Open(const std::wstring& path, bool writeAccess = true)
    {
        const Value file = ScriptObject::Make(L"File").Call(L"OpenBinary", path, writeAccess);
        if (!file.Object()) throw std::runtime_error("cannot open " + Narrow(path));
        return ScriptObject(file.Object());
    }
    ScriptObject Make(std::string_view bytes, bool writeAccess = true)
    {
        return Open(folder_.Write(L"test.bin", bytes), writeAccess);
    }
    std::string Content(ScriptObject& file)
    {
        file.Call(L"BClose");
        std::ifstream stream(std::filesystem::path(folder_.Path(L"test.bin")), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    TemporaryFolder folder_;
};

TEST_F(BinFileTest, ReadsEveryType)
{
    const std::string bytes = "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A"s;
    // Count, type, and the bytes that a number of this type has, whatever the count.
    const std::tuple<int, int, int> cases[] = {{0, VT_I2, 2}, {9, VT_I4, 4}, {-1, VT_UI1, 1},
                                               {0, VT_R4, 4}, {0, VT_R8, 8}, {0, VT_CY, 8}};
    ScriptObject file = Make(bytes);
    file.Put(L"TwistEndian", true); // for writing only
    for (const auto& [count, type, moved] : cases) {
        file.Put(L"Location", 0);
        Variant data(L"before"sv);
        ASSERT_EQ(file.Call(L"BRead", &data, count, type), true) << type;
        EXPECT_EQ(V_VT(&data), type);
        EXPECT_EQ(memcmp(&V_UI1(&data), bytes.data(), static_cast<size_t>(moved)), 0) << type;
        EXPECT_EQ(file.Get(L"ByteCount"), moved);
        EXPECT_EQ(file.Get(L"Location"), moved);
    }
    for (const int type : {0, -1, 7, 11, 12, 0x2011}) { // all that is no number and no string
        file.Put(L"Location", 1);
        Variant data;
        ASSERT_EQ(file.Call(L"BRead", &data, 4, type), true);
        EXPECT_EQ(BytesOf(data), bytes.substr(1, 4));
        EXPECT_EQ(V_ARRAY(&data)->rgsabound[0].lLbound, 0);
    }
}

TEST_F(BinFileTest, ReadsStrings)
{
    const struct {
        int position, count;
        bool unicode, ansi;
        std::wstring expected;
        int moved;
    } cases[] = {
        {0, 3, false, false, L"\x6261\x0063", 3},
        {0, 4, false, true, L"abcd", 4},
        {0, 3, false, true, L"abc\0"s, 3}, // the second half of the last character too
        {0, 3, true, true, L"\x6261\x0063", 3},
        // Three bytes before the end.
        {3, 10, false, false, L"\x6564\x0066\x0000"s, 3},
        {3, 10, false, true, L"def\0\0\0"s, 3},
        {3, 10, true, false, L"\x6564\x0066", 3},
    };
    ScriptObject file = Make("abcdef");
    for (const auto& [position, count, unicode, ansi, expected, moved] : cases) {
        file.Put(L"UseUnicode", unicode);
        file.Put(L"ConvertAnsi", ansi);
        file.Put(L"Location", position);
        Variant data;
        ASSERT_EQ(file.Call(L"BRead", &data, count, VT_BSTR), true);
        EXPECT_EQ(Value(std::move(data)), expected) << position << ' ' << count << unicode << ansi;
        EXPECT_EQ(file.Get(L"ByteCount"), moved);
        EXPECT_EQ(file.Get(L"EOF"), moved < count);
    }
}

TEST_F(BinFileTest, EofFollowsReadsAndPositioning)
{
    ScriptObject file = Make("abcdef");
    Variant data;
    const auto read = [&](int count) { return file.Call(L"BRead", &data, count).Truth(); };
    EXPECT_TRUE(read(6));
    EXPECT_EQ(file.Get(L"EOF"), false); // nobody has met the end yet
    EXPECT_FALSE(read(1));
    EXPECT_EQ(V_VT(&data), VT_EMPTY);
    EXPECT_EQ(file.Get(L"EOF"), true);
    EXPECT_EQ(file.Get(L"ByteCount"), 6); // of the read that was successful

    const std::pair<const wchar_t*, Arg> moves[] = {{L"Location", 4}, {L"LOC", Count(4)}};
    for (const auto& [property, position] : moves) {
        file.Put(property, position.value);
        EXPECT_EQ(file.Get(L"EOF"), false);
        EXPECT_TRUE(read(4)); // two are there: the array has its size all the same
        EXPECT_EQ(BytesOf(data), "ef\0\0"s);
        EXPECT_EQ(file.Get(L"EOF"), true);
    }
}

TEST_F(BinFileTest, RefusesReadsThatCannotBe)
{
    ScriptObject file = Make("abcdef");
    Variant data(L"before"sv);
    for (const auto& [count, type] : {std::pair{0, 0}, {0, VT_BSTR}, {-1, 0}, {0, 99}}) {
        EXPECT_EQ(ErrorOf([&] { file.Call(L"BRead", &data, count, type); }), kSizeUndefined);
        EXPECT_EQ(V_VT(&data), VT_EMPTY);
    }
    for (const int type : {0, static_cast<int>(VT_BSTR)})
        EXPECT_EQ(ErrorOf([&] { file.Call(L"BRead", &data, INT_MAX, type); }).number, 0x8007000E);

    // A variable that is an array is refused untouched; one that holds an array is taken.
    Variant array = ByteArray("keep");
    const Variant reference = Reference(VT_ARRAY | VT_UI1, &V_ARRAY(&array));
    EXPECT_EQ(ErrorOf([&] { file.Call(L"BRead", reference, 4); }), kWrongType);
    EXPECT_EQ(BytesOf(array), "keep");
    EXPECT_EQ(file.Get(L"Location"), 0);
    EXPECT_EQ(file.Call(L"BRead", &array, 2), true);
    EXPECT_EQ(BytesOf(array), "ab");
}

// As languages with typed variables pass them.
TEST_F(BinFileTest, ReadsIntoTypedVariables)
{
    ScriptObject file = Make("\x2A\0\0\0\xFF\xFF\xFF\x7F"s + "ab");
    LONG number = 1;
    SHORT small = 1;
    BSTR text = MakeBstr(L"before").release();
    EXPECT_EQ(file.Call(L"BRead", Reference(VT_I4, &number), 0, VT_I2), true);
    EXPECT_EQ(number, 42);
    file.Put(L"Location", 4);
    EXPECT_EQ(ErrorOf([&] { file.Call(L"BRead", Reference(VT_I2, &small), 0, VT_I4); }).number,
              0x800A0006);
    EXPECT_EQ(small, 0);
    EXPECT_EQ(ErrorOf([&] { file.Call(L"BRead", Reference(VT_I2, &small), 1); }).number,
              0x800A000D);
    file.Put(L"Location", 8);
    file.Put(L"ConvertAnsi", true);
    EXPECT_EQ(file.Call(L"BRead", Reference(VT_BSTR, &text), 2, VT_BSTR), true);
    EXPECT_STREQ(Bstr(text).get(), L"ab");
}

// What bytes a value has is tested with their module.
TEST_F(BinFileTest, Writes)
{
    ScriptObject file = Make("");
    EXPECT_EQ(file.Call(L"BWrite", L"text"), true);
    EXPECT_EQ(file.Call(L"BWrite", 0x41424344, 2), true); // its low bytes
    EXPECT_EQ(file.Get(L"ByteCount"), 2);
    for (const wchar_t* option : {L"UseUnicode", L"UseHexstring", L"TwistEndian"})
        file.Put(option, true);
    for (const Arg& value : {Arg(L"u"), Arg(L"&hFFfe7"), Arg(0x01020304)})
        EXPECT_EQ(file.Call(L"BWrite", value.value), true);
    Variant array = ByteArray("array");
    EXPECT_EQ(file.Call(L"BWrite", &array, 3), true);
    EXPECT_EQ(file.Get(L"Length"), 18);
    EXPECT_EQ(file.Get(L"Location"), 18);
    EXPECT_EQ(Content(file), "textDCu\0\xFF\xFE\x70\x01\x02\x03\x04"
                             "arr"s);
}

TEST_F(BinFileTest, RefusesWritesThatCannotBe)
{
    ScriptObject file = Make("old");
    for (const int count : {5, -1, INT_MAX})
        EXPECT_EQ(ErrorOf([&] { file.Call(L"BWrite", 1, count); }), kSizeMismatch) << count;
    EXPECT_EQ(ErrorOf([&] { file.Call(L"BWrite", file.Dispatch()); }), kUnusable);
    EXPECT_EQ(file.Call(L"BWrite", L""), false); // no bytes to write, and no error either
    EXPECT_EQ(file.Get(L"ByteCount"), 0);
    EXPECT_EQ(Content(file), "old");
}

TEST_F(BinFileTest, TrimEndsTheFileAtThePosition)
{
    ScriptObject file = Make("abcdef");
    file.Put(L"Location", 2);
    EXPECT_EQ(file.Call(L"BTrim"), true);
    EXPECT_EQ(file.Get(L"Length"), 2);
    file.Put(L"Location", 5);
    EXPECT_EQ(file.Call(L"BTrim"), true);
    EXPECT_EQ(file.Get(L"LOF"), Count(5));
    file.Call(L"BFlush");
    EXPECT_EQ(Content(file), "ab\0\0\0"s);
}

TEST_F(BinFileTest, PositionsBeyondFourGigabytes)
{
    ScriptObject file = Make("");
    constexpr std::int64_t kFar = 0x2'8000'0000; // a low half that is negative as a Long
    file.Put(L"Location2", 2);
    EXPECT_EQ(file.Get(L"LOC"), Count(0)); // not moved yet
    EXPECT_EQ(file.Get(L"Location2"), 2);
    file.Put(L"Location", INT_MIN);
    EXPECT_EQ(file.Get(L"LOC"), Count(kFar));
    EXPECT_EQ(file.Get(L"Location"), INT_MIN);
    ASSERT_EQ(file.Call(L"BWrite", 7), true) << "no room for a sparse file?";
    EXPECT_EQ(file.Get(L"LOF"), Count(kFar + 4));
    EXPECT_EQ(file.Get(L"Length2"), 2);
    EXPECT_EQ(file.Get(L"Length"), INT_MIN + 4);
    file.Put(L"LOC", Currency(kFar * 10'000 + 9'999)); // the fraction is dropped
    EXPECT_EQ(file.Get(L"Location2"), 2);
    Variant data;
    EXPECT_EQ(file.Call(L"BRead", &data, 0, VT_I4), true);
    EXPECT_EQ(V_I4(&data), 7);
    EXPECT_EQ(file.Get(L"LOC"), Count(kFar + 4));
    file.Put(L"Location2", 0);
    file.Put(L"Location", 0);
    EXPECT_EQ(file.Call(L"BTrim"), true);

    // After a move the halves come from the platform again, the one that was set before too.
    file.Put(L"LOC", Count(9));
    file.Put(L"Location2", 1);
    EXPECT_EQ(file.Get(L"Location2"), 0);

    for (const std::int64_t units : {std::int64_t{-1}, kLargestCount * 10'000 + 1, INT64_MAX})
        EXPECT_EQ(ErrorOf([&] { file.Put(L"LOC", Currency(units)); }), WrongProperty(L"LOC"));
    EXPECT_EQ(ErrorOf([&] { file.Put(L"Location2", -1); }), WrongProperty(L"Location2"));
    EXPECT_EQ(file.Get(L"LOC"), Count(9));

    // Farther than a Currency counts. Most file systems of the test bench do not go there.
    file.Put(L"Location2", INT_MAX);
    const ScriptError moved = ErrorOf([&] { file.Put(L"Location", 0); });
    if (moved == ScriptError{}) {
        EXPECT_EQ(ErrorOf([&] { file.Get(L"LOC"); }), WrongProperty(L"LOC"));
        EXPECT_EQ(file.Get(L"Location2"), INT_MAX);
    } else {
        EXPECT_EQ(moved, kLocationNotSet);
        EXPECT_EQ(file.Get(L"LOC"), Count(9));
    }
}

TEST_F(BinFileTest, ClosedAndReadOnlyFiles)
{
    ScriptObject reading = Make("abc", false);
    for (const wchar_t* member : {L"BTrim", L"BFlush"})
        EXPECT_EQ(ErrorOf([&] { reading.Call(member); }), kNoWriteAccess);
    EXPECT_EQ(ErrorOf([&] { reading.Call(L"BWrite", 1); }), kNoWriteAccess);
    EXPECT_NE(reading.Get(L"handle"), 0);
    reading.Put(L"Location", 1);

    reading.Call(L"BClose");
    reading.Call(L"BClose");
    const ScriptError notOpen =
        Error(0x8004034A, L"File is not open: " + folder_.Path(L"test.bin"));
    Variant data(L"before"sv);
    EXPECT_EQ(ErrorOf([&] { reading.Call(L"BRead", &data, 1); }), notOpen);
    EXPECT_EQ(Value(std::move(data)), L"before");
    for (const wchar_t* member : {L"BTrim", L"BFlush"})
        EXPECT_EQ(ErrorOf([&] { reading.Call(member); }), notOpen);
    EXPECT_EQ(ErrorOf([&] { reading.Call(L"BWrite", 1); }), notOpen);
    for (const wchar_t* member : {L"handle", L"Length", L"Length2", L"Location", L"Location2"})
        EXPECT_EQ(reading.Get(member), 0) << Narrow(member);
    for (const wchar_t* member : {L"LOC", L"LOF"})
        EXPECT_EQ(reading.Get(member), Count(0));
    reading.Put(L"Location", 5); // nothing to move, and nothing is raised
    reading.Put(L"Location2", -1);
    reading.Put(L"LOC", Count(-1));
}

// The failures of the platform are made by putting an event in the place of the file's handle.
TEST_F(BinFileTest, ErrorLevelLetsThroughWhatIsSevereEnough)
{
    ScriptObject file = Make("abc");
    const auto raw = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(file.Get(L"handle").Number()));
    ASSERT_TRUE(CloseHandle(raw));
    ASSERT_EQ(CreateEventW(nullptr, FALSE, FALSE, nullptr), raw);
    file.Put(L"Location2", 1);

    Variant data;
    Variant array = ByteArray("x");
    const Variant reference = Reference(VT_ARRAY | VT_UI1, &V_ARRAY(&array));
    const auto failed = [](const wchar_t* what) {
        return Error(0x80040350, std::wstring(L"API function failed to ") + what);
    };
    const auto get = [&](const wchar_t* name) { return [&file, name] { return file.Get(name); }; };
    const auto put = [&](const wchar_t* name, int value) {
        return [&file, name, value] { return file.Put(name, value), Value(); };
    };
    const ScriptError noSize = failed(L"return the file size.");
    const struct {
        int severity;
        std::function<Value()> action;
        ScriptError expected;
        Arg quiet;
    } cases[] = {
        {2, [&] { return file.Call(L"BRead", &data); }, kSizeUndefined, false},
        {2, [&] { return file.Call(L"BRead", reference, 1); }, kWrongType, false},
        {2, [&] { return file.Call(L"BWrite", true); }, kUnusable, false},
        {2, [&] { return file.Call(L"BWrite", 1, 5); }, kSizeMismatch, false},
        {1, get(L"Length"), noSize, 0},
        {1, get(L"Length2"), noSize, 0},
        {1, get(L"LOF"), noSize, Count(0)},
        {1, get(L"LOC"), failed(L"return the file pointer."), Count(0)},
        {1, put(L"LOC", 1), failed(L"set the file pointer."), Variant()},
        {1, put(L"Location", 1), kLocationNotSet, Variant()},
        {1, put(L"Location2", -1), WrongProperty(L"Location2"), Variant()},
    };
    for (const int level : {0, 1, 2}) {
        file.Put(L"ErrorLevel", level);
        for (const auto& [severity, action, expected, quiet] : cases) {
            Value result;
            const ScriptError raised = ErrorOf([&] { result = action(); });
            EXPECT_EQ(raised, level >= severity ? expected : ScriptError{}) << level;
            if (level < severity) {
                EXPECT_EQ(result, quiet);
            }
        }
    }
    EXPECT_EQ(file.Call(L"BRead", &data, 1), false); // what the platform refuses is the end
    EXPECT_EQ(file.Get(L"EOF"), true);
    EXPECT_EQ(file.Call(L"BWrite", 1), false);
    EXPECT_EQ(file.Call(L"BTrim"), false);
}

TEST_F(BinFileTest, HoldsTheFileUntilItGoes)
{
    ScriptObject files = ScriptObject::Make(L"File");
    const std::wstring path = folder_.Write(L"test.bin", "abc");
    ScriptObject file = Open(path, false);
    EXPECT_EQ(files.Call(L"OpenBinary", path).Object(), nullptr);
    EXPECT_EQ(files.Call(L"OpenBinary", path, false).Object(), nullptr);
    EXPECT_FALSE(DeleteFileW(path.c_str()));
    file.Release();
    file = Open(path);
    file.Call(L"BWrite", L"X");
    file.Release(); // without BClose: what was written is there
    EXPECT_EQ(Content(file = Open(path)), "Xbc");
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

} // namespace
} // namespace quill::test
