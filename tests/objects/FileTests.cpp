#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

using namespace std::literals;

// A point in time as scripts have it, in days.
Arg Date(double days)
{
    return Variant::OfDate(days);
}
const Arg kNoDate = Date(0);

std::wstring OwnProgram()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path;
}

class FileTest : public testing::Test {
protected:
    // Bytes of a file; -1 when it is not there.
    static long long SizeOf(const std::wstring& path)
    {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return -1;
        return data.nFileSizeLow;
    }

    TemporaryFolder folder_;
    ScriptObject file_ = ScriptObject::Make(L"File");
};

TEST_F(FileTest, CreateEmptiesWithOverwriteOnly)
{
    const std::wstring path = folder_.Path(L"new");
    EXPECT_EQ(file_.Call(L"Create", path), true);
    EXPECT_EQ(SizeOf(path), 0);
    folder_.Write(L"new", "content");
    EXPECT_EQ(file_.Call(L"Create", path), false);
    EXPECT_EQ(SizeOf(path), 7);
    EXPECT_EQ(file_.Call(L"Create", path, Named{L"overwrite", true}), true);
    EXPECT_EQ(SizeOf(path), 0);
    EXPECT_TRUE(DeleteFileW(path.c_str())); // it was closed
    EXPECT_EQ(file_.Call(L"Create", folder_.Path(L""), true), false);
    EXPECT_EQ(file_.Call(L"Create", folder_.Path(L"missing\\x")), false);
}

TEST_F(FileTest, ExistsTakesFoldersAndPatterns)
{
    folder_.Write(L"\u4E2D.txt", "");
    const std::pair<const wchar_t*, bool> cases[] = {
        {L"\u4E2D.txt", true}, {L"*.txt", true}, {L"*.doc", false}, {L"..", true}, {L"", false}};
    for (const auto& [name, expected] : cases)
        EXPECT_EQ(file_.Call(L"Exists", folder_.Path(name)), expected) << Narrow(name);
}

TEST_F(FileTest, KindsOfPrograms)
{
    const std::wstring program = OwnProgram(); // of the console
    const std::wstring library = L"C:\\windows\\system32\\kernel32.dll";
    const std::wstring windowed = L"C:\\windows\\system32\\notepad.exe";
    const std::wstring text = folder_.Write(L"a.exe", "no program at all");
    for (const auto& [path, type, type3] :
         {std::tuple{program, 0, 2}, {windowed, 0, 1}, {text, -1, 0}}) {
        EXPECT_EQ(file_.Call(L"ExeType", path), type) << Narrow(path);
        EXPECT_EQ(file_.Call(L"ExeType2", path), type) << Narrow(path);
        EXPECT_EQ(file_.Call(L"ExeType3", path), type3) << Narrow(path);
    }
    // Whether ExeType takes a library for a program is up to the platform.
    EXPECT_EQ(file_.Call(L"ExeType2", library), -1);
    EXPECT_EQ(file_.Call(L"ExeType3", library), 0);
    EXPECT_EQ(file_.Call(L"ExeType3", windowed, true), 400);
}

TEST_F(FileTest, ReplaceKeepsABackup)
{
    const std::wstring path = folder_.Write(L"file", "old");
    EXPECT_EQ(file_.Call(L"Replace", path, folder_.Write(L"new", "newer"), folder_.Path(L"kept")),
              true);
    EXPECT_EQ(SizeOf(path), 5);
    EXPECT_EQ(SizeOf(folder_.Path(L"kept")), 3);
    EXPECT_EQ(file_.Call(L"Replace", path, folder_.Path(L"new")), false); // it is gone
    EXPECT_EQ(SizeOf(path), 5);
}

TEST_F(FileTest, ApplicationOfADocument)
{
    // A type of our own, since the prefix of the tests registers none.
    const HKEY classes = HKEY_CLASSES_ROOT;
    const std::wstring command = L"\"" + OwnProgram() + L"\" \"%1\"";
    const auto set = [&](const wchar_t* key, const std::wstring& value) {
        return RegSetKeyValueW(classes, key, nullptr, REG_SZ, value.c_str(),
                               static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    };
    ASSERT_EQ(set(L".quilltest", L"quilltest.document"), 0);
    ASSERT_EQ(set(L"quilltest.document\\shell\\open\\command", command), 0);
    const Value found = file_.Call(L"Application", folder_.Write(L"x.quilltest", ""));
    RegDeleteTreeW(classes, L".quilltest");
    RegDeleteTreeW(classes, L"quilltest.document");
    EXPECT_EQ(_wcsicmp(found.Text().c_str(), OwnProgram().c_str()), 0) << Narrow(found.Text());
    EXPECT_EQ(file_.Call(L"Application", folder_.Write(L"x.unknown", "")), L"");
}

TEST_F(FileTest, TimesOfFilesAndFolders)
{
    for (const std::wstring& path : {folder_.Write(L"a", ""), folder_.Path(L"")}) {
        const Value before = file_.Call(L"TimeGet", path, 4);
        EXPECT_EQ(file_.Call(L"TimeSet", path, Date(36526.25)), true); // 1 January 2000, 6:00
        EXPECT_EQ(file_.Call(L"TimeGet", path), Date(36526.25));
        EXPECT_EQ(file_.Call(L"TimeGet", path, 99),
                  Date(36526.25)); // the last write, if nothing else
        EXPECT_EQ(file_.Call(L"TimeGet", path, 4), before);
        EXPECT_EQ(file_.Call(L"TimeSet", path, Date(40000.5), 4), true);
        EXPECT_EQ(file_.Call(L"TimeGet", path, 4), Date(40000.5));
        EXPECT_EQ(file_.Call(L"TimeSet", path, Date(37000), 7), true);
        for (const int which : {2, 4})
            EXPECT_EQ(file_.Call(L"TimeGet", path, which), Date(37000));
        EXPECT_EQ(file_.Call(L"TimeSet", path, Date(36526.25), 3), true);
        EXPECT_EQ(file_.Call(L"TimeGet", path, 4), Date(37000));
        EXPECT_EQ(file_.Call(L"TimeSet", path, Date(1), 0), true);
        EXPECT_EQ(file_.Call(L"TimeGet", path), Date(36526.25)) << "which 0 sets none";
        // Before the file system's first year, and no date at all.
        for (const double days : {-200'000.0, 1e9, -1e300, std::nan("")})
            EXPECT_EQ(file_.Call(L"TimeSet", path, Date(days)), false) << days;
        EXPECT_EQ(file_.Call(L"TimeGet", path), Date(36526.25));
    }
}

TEST_F(FileTest, ComparesTimes)
{
    const std::wstring early = folder_.Write(L"early", "");
    const std::wstring late = folder_.Write(L"late", "");
    const std::wstring missing = folder_.Path(L"missing");
    ASSERT_EQ(file_.Call(L"TimeSet", early, Date(36526), 2), true);
    ASSERT_EQ(file_.Call(L"TimeSet", late, Date(36527), 2), true);
    ASSERT_EQ(file_.Call(L"TimeSet", early, Date(36529), 4), true);
    ASSERT_EQ(file_.Call(L"TimeSet", late, Date(36528), 4), true);
    EXPECT_EQ(file_.Call(L"TimeCompare", early, late), 1);
    EXPECT_EQ(file_.Call(L"TimeCompare", late, early), 2);
    EXPECT_EQ(file_.Call(L"TimeCompare", early, late, 4), 2);
    EXPECT_EQ(file_.Call(L"TimeCompare", early, early), 0);
    EXPECT_EQ(file_.Call(L"TimeCompare", early, missing), -1);
    EXPECT_EQ(file_.Call(L"TimeCompare", missing, early), -1);
}

TEST_F(FileTest, FailuresAreQuiet)
{
    const std::wstring here = folder_.Write(L"here", "x");
    for (const std::wstring& path :
         {L""s, folder_.Path(L"missing"), folder_.Path(L"missing\\x"), L"?\0x"s,
          std::wstring(40'000, L'x'), L"\\\\.\\x:"s, L"a<b>|c"s}) {
        SCOPED_TRACE(Narrow(path.substr(0, 80)));
        EXPECT_EQ(file_.Call(L"Application", path), L"");
        EXPECT_EQ(file_.Call(L"ExeType", path), -1);
        EXPECT_EQ(file_.Call(L"ExeType2", path), -1);
        EXPECT_EQ(file_.Call(L"ExeType3", path), 0);
        EXPECT_EQ(file_.Call(L"Replace", path, here), false);
        EXPECT_EQ(file_.Call(L"Replace", here, path), false);
        EXPECT_EQ(file_.Call(L"TimeSet", path, Date(36526)), false);
        EXPECT_EQ(file_.Call(L"TimeGet", path), kNoDate);
        EXPECT_EQ(file_.Call(L"TimeCompare", path, here), -1);
    }
    EXPECT_EQ(SizeOf(here), 1);
    for (const std::wstring& path : {folder_.Path(L"missing"), folder_.Path(L""), L"NUL"s, L"CON"s})
        EXPECT_EQ(file_.Call(L"OpenBinary", path, false).Object(), nullptr) << Narrow(path);
}

} // namespace
} // namespace quill::test
