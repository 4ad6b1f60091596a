// What a script's table of BinFile cannot do: variables of typed languages, failures of the
// platform.
#include <gtest/gtest.h>

#include <functional>

#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"
#include "support/Values.h"

namespace quill::test {
namespace {

using namespace std::literals;

class BinFileTest : public testing::Test {
protected:
    ScriptObject Make(std::string_view bytes)
    {
        return ScriptObject(ScriptObject::Make(L"File")
                                .Call(L"OpenBinary", folder_.Write(L"test.bin", bytes))
                                .Object());
    }

    const TemporaryFolder folder_;
};

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
    const Variant tooLarge = Reference(VT_I4, &number);
    EXPECT_EQ(ErrorOf([&] { file.Call(L"BRead", tooLarge, INT_MAX); }).number, 0x8007000E);
}

// They are made by putting an event in the place of the file's handle.
TEST_F(BinFileTest, FailuresOfThePlatformAreRaisedFromErrorLevel1)
{
    ScriptObject file = Make("abc");
    const auto raw = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(file.Get(L"handle").Number()));
    ASSERT_TRUE(CloseHandle(raw));
    ASSERT_EQ(CreateEventW(nullptr, FALSE, FALSE, nullptr), raw);
    file.Put(L"Location2", 1);

    const auto failed = [](const std::wstring& what) {
        return ScriptError{0x80040350, L"Quill.BinFile", what};
    };
    const auto get = [&](const wchar_t* name) { return [&file, name] { return file.Get(name); }; };
    const auto put = [&](const wchar_t* name) {
        return [&file, name] { return file.Put(name, 1), Value(); };
    };
    const ScriptError noSize = failed(L"API function failed to return the file size.");
    const struct {
        std::function<Value()> action;
        ScriptError expected;
        Arg quiet;
    } cases[] = {
        {get(L"Length"), noSize, 0},
        {get(L"Length2"), noSize, 0},
        {get(L"LOF"), noSize, Currency(0)},
        {get(L"LOC"), failed(L"API function failed to return the file pointer."), Currency(0)},
        {put(L"LOC"), failed(L"API function failed to set the file pointer."), Variant()},
        {put(L"Location"), failed(L"Could not set the assigned file pointer."), Variant()},
    };
    for (const auto& [action, expected, quiet] : cases) {
        file.Put(L"ErrorLevel", 1);
        EXPECT_EQ(ErrorOf(action), expected);
        file.Put(L"ErrorLevel", 0);
        EXPECT_EQ(action(), quiet);
    }
    Variant data;
    EXPECT_EQ(file.Call(L"BRead", &data, 1), false); // what the platform refuses is the end
    EXPECT_EQ(file.Get(L"EOF"), true);
    EXPECT_EQ(file.Call(L"BWrite", 1), false);
    EXPECT_EQ(file.Call(L"BTrim"), false);
}

} // namespace
} // namespace quill::test
