#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

using namespace std::literals;

const ScriptError kNoProfile{0x80040340, L"Quill.Profile", L"No Profile defined."};
const ScriptError kValueTooLong{0x80040341, L"Quill.Profile",
                                L"Key value length is beyond maximum (0x2000)."};
const ScriptError kSectionTooLong{0x80040341, L"Quill.Profile",
                                  L"Section entries beyond maximum (0x8000)."};

ScriptError NotFound(const std::wstring& path)
{
    return {0x8004033F, L"Quill.Profile", L"Profile not found: " + path};
}

class ProfileTest : public testing::Test {
protected:
    ProfileTest() : path_(folder_.Write(L"test.ini", "[one]\r\na=1\r\nb=2\r\n[two]\r\nc=3\r\n")) {}

    // An object whose File is set.
    ScriptObject Open(const std::wstring& path)
    {
        ScriptObject profile = ScriptObject::Make(L"Profile");
        profile.Put(L"File", path);
        return profile;
    }
    ScriptObject Open() { return Open(path_); }

    TemporaryFolder folder_;
    const std::wstring path_;
};

TEST_F(ProfileTest, FileMustExist)
{
    ScriptObject profile = ScriptObject::Make(L"Profile");
    EXPECT_EQ(profile.Get(L"File"), L"");
    const std::wstring missing = folder_.Path(L"missing.ini");
    for (const std::wstring& path : {missing, L""s, std::wstring(40'000, L'x')}) {
        EXPECT_EQ(ErrorOf([&] { profile.Put(L"File", path); }), NotFound(path));
        EXPECT_EQ(profile.Get(L"File"), L"");
    }
    // Not looked for in the program's folder: the executable of this test lies there.
    const wchar_t* name = L"object_tests.exe";
    EXPECT_EQ(ErrorOf([&] { profile.Put(L"File", name); }), NotFound(name));

    // Nor taken for the file with a similar letter.
    const std::wstring outside = folder_.Write(L"\u0100.ini", "");
    folder_.Write(L"A.ini", "");
    EXPECT_EQ(ErrorOf([&] { profile.Put(L"File", outside); }), NotFound(outside));

    profile.Put(L"File", folder_.Path(L"")); // a folder counts
    profile.Put(L"File", path_);
    EXPECT_EQ(ErrorOf([&] { profile.Put(L"File", missing); }), NotFound(missing));
    EXPECT_EQ(profile.Get(L"File"), path_);

    profile.Put(L"ErrorLevel", 0);
    profile.Put(L"File", missing);
    EXPECT_EQ(profile.Get(L"File"), path_);
}

TEST_F(ProfileTest, EveryAccessNeedsAFile)
{
    ScriptObject profile = ScriptObject::Make(L"Profile");
    const std::wstring tooLong(32769, L'x');
    const std::pair<std::function<Value()>, Arg> cases[] = {
        {[&] { return profile.Call(L"GetValue", L"one", L"a"); }, L""},
        {[&] { return profile.Call(L"GetSection", L"one"); }, L""},
        {[&] { return profile.Call(L"GetSectionNames"); }, L""},
        // Before any other check.
        {[&] { return profile.Call(L"SetValue", L"s", L"k", tooLong); }, false},
        {[&] { return profile.Call(L"SetSection", L"s", tooLong); }, false},
    };
    for (const auto& [access, quiet] : cases) {
        profile.Put(L"ErrorLevel", 1);
        EXPECT_EQ(ErrorOf(access), kNoProfile);
        profile.Put(L"ErrorLevel", 0);
        EXPECT_EQ(access(), quiet);
    }
}

TEST_F(ProfileTest, ReadsValuesSectionsAndNames)
{
    ScriptObject profile = Open();
    EXPECT_EQ(profile.Call(L"GetValue", L"ONE", L"B"), L"2");
    EXPECT_EQ(profile.Call(L"GetValue", L"none", L"a"), L"");

    EXPECT_EQ(profile.Call(L"GetSection", Named{L"section", L"one"}, Named{L"cvt", false}),
              L"a=1\0b=2\0"s);
    EXPECT_EQ(profile.Call(L"GetSection", L"none"), L"");

    EXPECT_EQ(profile.Call(L"GetSectionNames", false), L"one\0two\0"s);
}

TEST_F(ProfileTest, AnEmptyEntryDeletesTheKeyAndAnEmptyKeyTheSection)
{
    ScriptObject profile = Open();
    EXPECT_EQ(profile.Call(L"SetValue", L"one", L"a", L""), true);
    EXPECT_EQ(profile.Call(L"GetSection", L"one"), L"b=2\r\n");
    EXPECT_EQ(profile.Call(L"SetValue", L"one", L"", L"anything"), true);
    EXPECT_EQ(profile.Call(L"GetSectionNames"), L"two\r\n");
    EXPECT_EQ(profile.Call(L"SetValue", L"two", L"", L""), true);
    EXPECT_EQ(profile.Call(L"GetSectionNames"), L"");
}

TEST_F(ProfileTest, SetSectionReplacesTheSection)
{
    const std::tuple<std::wstring, bool, std::wstring> cases[] = {
        // Lines, cvt, and what GetSection shows then.
        {L"x=1\r\ny=2", true, L"x=1\r\ny=2\r\n"},
        {L"x=1\r\ny=2\r\n", true, L"x=1\r\ny=2\r\n"}, // the list may end in a line break
        {L"x=1\0y=2\0\0"s, false, L"x=1\r\ny=2\r\n"},
        {L"x=1\0y=2"s, false, L"x=1\r\ny=2\r\n"}, // the closing NULs were forgotten
        {L"x=1\r\n\r\ny=2", true, L"x=1\r\n"},    // an empty line ends the list
    };
    ScriptObject profile = Open();
    for (const auto& [entries, convert, expected] : cases) {
        EXPECT_EQ(profile.Call(L"SetSection", L"two", entries, convert), true);
        EXPECT_EQ(profile.Call(L"GetSection", L"two"), expected) << Narrow(entries);
        EXPECT_EQ(profile.Call(L"GetSection", L"one"), L"a=1\r\nb=2\r\n");
    }
}

TEST_F(ProfileTest, LengthLimits)
{
    ScriptObject profile = Open();
    const std::wstring value(8192, L'v');
    EXPECT_EQ(profile.Call(L"SetValue", L"one", L"a", value), true);
    // The buffer of a read has room for one less and the terminator.
    EXPECT_EQ(profile.Call(L"GetValue", L"one", L"a"), value.substr(1));
    EXPECT_EQ(ErrorOf([&] { profile.Call(L"SetValue", L"one", L"", value + L"v"); }),
              kValueTooLong);

    // Line breaks count as given, two characters each.
    std::wstring entries;
    while (entries.size() < 32'768)
        entries += L"k" + std::to_wstring(100'000 + entries.size()) + L"=12345\r\n";
    entries.resize(32'768);
    EXPECT_EQ(profile.Call(L"SetSection", L"big", entries), true);
    EXPECT_EQ(profile.Call(L"GetValue", L"big", L"k100000"), L"12345");
    EXPECT_EQ(ErrorOf([&] { profile.Call(L"SetSection", L"two", entries + L"x"); }),
              kSectionTooLong);

    profile.Put(L"ErrorLevel", 0);
    EXPECT_EQ(profile.Call(L"SetValue", L"one", L"b", value + L"v"), false);
    EXPECT_EQ(profile.Call(L"SetSection", L"two", entries + L"x"), false);
    EXPECT_EQ(profile.Call(L"GetValue", L"one", L"b"), L"2");
    EXPECT_EQ(profile.Call(L"GetSection", L"two"), L"c=3\r\n");
}

TEST_F(ProfileTest, WhatThePlatformCannotDoIsQuiet)
{
    // Not even ErrorLevel 1 raises what a read or a write meets in the file system.
    ScriptObject profile = Open();
    {
        // A reader that shares no writing stands for all write protection: the administrator of
        // the test machine may write to a read-only file.
        const Owned<HANDLE, CloseHandle> reader(CreateFileW(
            path_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_NE(reader.get(), INVALID_HANDLE_VALUE);
        EXPECT_EQ(profile.Call(L"SetValue", L"one", L"a", L"new"), false);
        EXPECT_EQ(profile.Call(L"SetSection", L"one", L"a=new"), false);
    }
    ASSERT_TRUE(DeleteFileW(path_.c_str()));
    EXPECT_EQ(profile.Call(L"GetValue", L"one", L"a"), L"");
    EXPECT_EQ(profile.Call(L"GetSection", L"one"), L"");
    EXPECT_EQ(profile.Call(L"GetSectionNames"), L"");

    ScriptObject ofFolder = Open(folder_.Path(L"."));
    EXPECT_EQ(ofFolder.Call(L"GetValue", L"one", L"a"), L"");
    EXPECT_EQ(ofFolder.Call(L"SetValue", L"one", L"a", L"1"), false);
}

TEST_F(ProfileTest, CharactersOutsideAsciiAndNuls)
{
    const std::wstring path = folder_.Write(L"unicode.ini", "\xFF\xFE");
    ScriptObject profile = Open(path);
    const std::wstring text = L"\u0416\u4E2D \U0001F600";
    EXPECT_EQ(profile.Call(L"SetValue", text, text, text), true);
    EXPECT_EQ(profile.Call(L"GetValue", text, text), text);
    EXPECT_EQ(profile.Call(L"GetSectionNames"), text + L"\r\n");

    // The platform reads its arguments up to the first NUL.
    EXPECT_EQ(profile.Call(L"SetValue", L"s\0x"s, L"k\0x"s, L"v\0x"s), true);
    EXPECT_EQ(profile.Call(L"GetValue", L"s", L"k"), L"v");
    EXPECT_EQ(profile.Call(L"GetValue", L"s\0y"s, L"k\0y"s), L"v");
}

} // namespace
} // namespace quill::test
