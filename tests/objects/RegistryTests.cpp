#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "services/registryfn.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

using namespace std::literals;

constexpr long kInvalidPath = 801;
constexpr long kNothingThere = 802;
constexpr long kNotFound = 2; // of the platform

// A key that the object opened of itself, made and removed with the test.
class RegistryTest : public testing::Test {
protected:
    RegistryTest() : key_(Make(L"")) {}
    ~RegistryTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\QuillTest"); }

    static constexpr wchar_t kPath[] = L"Software\\QuillTest\\Registry";

    // As the object takes it.
    static std::wstring Path(const std::wstring& below = L"")
    {
        return L"HKCU\\"s + kPath + (below.empty() ? L"" : L"\\") + below;
    }

    static RegistryKey Make(const std::wstring& below, DWORD options = 0)
    {
        HKEY made = nullptr;
        const std::wstring path = Path(below).substr(5);
        if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS,
                            nullptr, &made, nullptr) != ERROR_SUCCESS)
            throw std::runtime_error("cannot make " + Narrow(path));
        return RegistryKey(made);
    }

    void Set(const std::wstring& name, DWORD type, const std::wstring& text) const
    {
        // Behind a text stands no NUL, or the platform would store it too.
        const std::wstring followed = text + L'x';
        SetBytes(name, type, {reinterpret_cast<const char*>(followed.data()), text.size() * 2});
    }
    void SetBytes(const std::wstring& name, DWORD type, std::string_view bytes) const
    {
        if (RegSetValueExW(key_.get(), name.c_str(), 0, type,
                           reinterpret_cast<const BYTE*>(bytes.data()),
                           static_cast<DWORD>(bytes.size())) != ERROR_SUCCESS)
            throw std::runtime_error("cannot set " + Narrow(name));
    }

    static bool IsEmpty(const VARIANT& value) { return V_VT(&value) == VT_EMPTY; }

    // The elements of an array, with their type behind them: "a b (8)".
    static std::wstring Elements(const VARIANT& array)
    {
        const SAFEARRAY* elements = ArrayOf(array);
        if (!elements) return L"no array";
        std::wstring text;
        if (elements->rgsabound[0].lLbound != 0) text = L"not from 0 ";
        for (const Variant& element : ElementsOf(*elements, SIZE_MAX))
            text += ToText(element) + L' ';
        return text + L'(' + std::to_wstring(V_VT(&array) & VT_TYPEMASK) + L')';
    }

    std::wstring Items(const std::wstring& path, long items, long code = 0)
    {
        Variant list(L"before"sv);
        EXPECT_EQ(registry_.Call(L"GetItems", path, &list), items) << Narrow(path);
        EXPECT_EQ(registry_.Get(L"ErrorCode"), code) << Narrow(path);
        return V_VT(&list) == VT_BSTR ? ToText(list) : Elements(list);
    }

    std::wstring Found(const std::wstring& item, const std::wstring& path, long code = 0)
    {
        const std::wstring found = registry_.Call(L"Search", item, path).Text();
        EXPECT_EQ(registry_.Get(L"ErrorCode"), code) << Narrow(item);
        return found.starts_with(Path()) ? found.substr(Path().size()) : found;
    }

    Value Read(const std::wstring& item, long code = 0)
    {
        Value value = registry_.Call(L"RegRead", item);
        EXPECT_EQ(registry_.Get(L"ErrorCode"), code) << Narrow(item);
        return value;
    }

    // What RegEntryExists and RegEntryExists1 say, and ErrorCode then.
    void ExpectKind(const std::wstring& path, int kind, long code, int plain, long plainCode)
    {
        SCOPED_TRACE(Narrow(path.substr(0, 80)));
        EXPECT_EQ(registry_.Call(L"RegEntryExists", path), kind);
        EXPECT_EQ(registry_.Get(L"ErrorCode"), code);
        EXPECT_EQ(registry_.Call(L"RegEntryExists1", path), plain);
        EXPECT_EQ(registry_.Get(L"ErrorCode"), plainCode);
    }

    // What a value of these bytes is read as, with ConvertArr and without.
    void ExpectRead(DWORD type, std::string_view bytes, const std::wstring& converted,
                    const std::wstring& raw)
    {
        SetBytes(L"value", type, bytes);
        for (const bool convert : {true, false}) {
            registry_.Put(L"ConvertArr", convert);
            EXPECT_EQ(Elements(Read(Path(L"value"))), convert ? converted : raw) << bytes;
        }
    }

    const RegistryKey key_;
    ScriptObject registry_ = ScriptObject::Make(L"Registry");
};

TEST_F(RegistryTest, RootsHaveTwoNamesInAnyCase)
{
    for (const wchar_t* name :
         {L"HKEY_CLASSES_ROOT", L"HKCR", L"HKEY_CURRENT_USER", L"hkcu", L"HKEY_LOCAL_MACHINE",
          L"HKLM", L"Hkey_Users", L"HKU", L"HKEY_CURRENT_CONFIG", L"HKCC\\"})
        for (const wchar_t* member : {L"RegEntryExists", L"RegEntryExists1"})
            EXPECT_EQ(registry_.Call(member, name), 1) << Narrow(name);
    for (const std::wstring& path : {L""s, L"\\"s, L"HK"s, L"HKEY_PERFORMANCE_DATA"s, L" HKCU"s,
                                     L"HKCU/Software"s, L"\\HKCU"s, L"HKCU\0\\Software"s}) {
        EXPECT_EQ(Items(path, 0, kInvalidPath), L"before");
        EXPECT_EQ(Found(L"*", path, kInvalidPath), L"");
        EXPECT_TRUE(IsEmpty(Read(path, kInvalidPath)));
        ExpectKind(path, 0, kInvalidPath, 0, kInvalidPath);
    }
}

TEST_F(RegistryTest, ReadsEveryType)
{
    SetEnvironmentVariableW(L"QUILLTEST", L"expanded");
    const std::tuple<DWORD, std::wstring, std::wstring, std::wstring> texts[] = {
        // What is stored; what comes back with ConvertStr, and without.
        {REG_SZ, L"", L"", L""},
        {REG_SZ, L"\0"s, L"", L""},
        {REG_SZ, L"no end", L"no end", L"no end"},
        {REG_SZ, L"a\0b\0\0"s, L"a\0b\0"s, L"a\0b\0"s},
        {REG_SZ, L"%QUILLTEST%\0"s, L"%QUILLTEST%", L"%QUILLTEST%"},
        {REG_EXPAND_SZ, L"<%QUILLTEST%>\0"s, L"<expanded>", L"<%QUILLTEST%>"},
        {REG_EXPAND_SZ, L"", L"", L""},
        {REG_EXPAND_SZ, L"%NONE%", L"%NONE%", L"%NONE%"},
        {REG_MULTI_SZ, L"a\0\0b\0\0"s, L"a  b ", L"a\0\0b\0"s},
        {REG_MULTI_SZ, L"a\0b\0"s, L"a b ", L"a\0b"s}, // a NUL is missing
        {REG_MULTI_SZ, L"a\0b"s, L"a b ", L"a\0b"s},   // and another one
        {REG_MULTI_SZ, L"\0"s, L"", L""},
        {REG_MULTI_SZ, L"", L"", L""},
    };
    for (const auto& [type, stored, converted, raw] : texts) {
        SCOPED_TRACE(Narrow(stored) + ' ' + std::to_string(type));
        Set(L"value", type, stored);
        registry_.Put(L"ConvertStr", true);
        for (const bool convert : {false, true}) {
            registry_.Put(L"ConvertArr", convert);
            const Value value = Read(Path(L"value"));
            if (type == REG_MULTI_SZ)
                EXPECT_EQ(Elements(value), converted + (convert ? L"(12)" : L"(8)"));
            else
                EXPECT_EQ(value, converted);
        }
        registry_.Put(L"ConvertStr", false);
        EXPECT_EQ(Read(Path(L"value")), raw);
    }
    ExpectRead(REG_BINARY, "\x01\xFF\0"s, L"1 255 0 (12)", L"1 255 0 (17)");
    ExpectRead(REG_BINARY, "", L"(12)", L"(17)");
    ExpectRead(REG_QWORD, "\7\6\5\4\3\2\1\1", L"7 6 5 4 3 2 1 1 (12)", L"7 6 5 4 3 2 1 1 (17)");
    for (const auto& [bytes, expected] :
         {std::pair{"\xFE\xFF\xFF\xFF"s, -2L}, {"\x02"s, 2L}, {""s, 0L}, {"\x01\0\0\0\xFF"s, 1L}}) {
        SetBytes(L"value", REG_DWORD, bytes);
        EXPECT_EQ(Read(Path(L"value")), expected) << bytes.size();
    }
    for (const DWORD type : {REG_NONE, REG_DWORD_BIG_ENDIAN, REG_RESOURCE_LIST, 12345}) {
        SetBytes(L"value", type, "1234");
        EXPECT_TRUE(IsEmpty(Read(Path(L"value"), kNothingThere))) << type;
    }
}

TEST_F(RegistryTest, ReadsByPathAndName)
{
    Make(L"sub");
    Set(L"name", REG_SZ, L"plain\0"s);
    Set(L"a\\b", REG_SZ, L"with a backslash\0"s);
    EXPECT_EQ(registry_.Call(L"RegRead", Path(), L"a\\b"), L"with a backslash");
    EXPECT_EQ(registry_.Call(L"RegRead1", Path(L"name"), L"a\\b"), L"plain"); // sVal is not used
    EXPECT_TRUE(IsEmpty(registry_.Call(L"RegRead1", Path(), L"name")));
    EXPECT_EQ(registry_.Get(L"ErrorCode"), kNothingThere);

    EXPECT_TRUE(IsEmpty(Read(Path(L"sub"), kNothingThere)));   // a key is no value
    EXPECT_TRUE(IsEmpty(Read(Path(L"sub\\"), kNothingThere))); // a default without a value
    EXPECT_TRUE(IsEmpty(Read(Path(L"none\\name"), kNothingThere)));
    EXPECT_TRUE(IsEmpty(Read(L"HKCU\\no such value", kNothingThere)));
    EXPECT_TRUE(IsEmpty(Read(L"HKCU\\", kInvalidPath)));
    EXPECT_TRUE(IsEmpty(registry_.Call(L"RegRead", L"HKCU", L"name")));
    EXPECT_EQ(registry_.Get(L"ErrorCode"), kInvalidPath);
}

TEST_F(RegistryTest, TellsKeysFromValues)
{
    Make(L"sub");
    for (const wchar_t* name : {L"name", L"a\\b", L"sub\\"})
        Set(name, REG_SZ, L"");
    std::wstring steps;
    while (steps.size() < kValueNameLimit)
        steps += L"\\x";
    ExpectKind(Path(L"SUB"), 1, 0, 1, 0);
    ExpectKind(Path(L"NAME"), 2, 0, 2, 0);
    ExpectKind(Path(L"a\\b"), 2, 0, 0, kNotFound);
    for (const std::wstring& none :
         {Path(L"none"), Path(L"none\\a\\b"), L"HKCU\\no such name"s, Path(L"none" + steps),
          L"HKCU" + std::wstring(5'000'000, L'\\')})
        ExpectKind(none, 0, kNothingThere, 0, kNotFound);

    // Right under the root only one of them looks.
    ASSERT_EQ(RegSetValueExW(HKEY_CURRENT_USER, L"QuillTest", 0, REG_SZ, nullptr, 0), 0);
    EXPECT_EQ(registry_.Call(L"RegEntryExists", L"HKCU\\QuillTest"), 0);
    EXPECT_EQ(registry_.Call(L"RegEntryExists1", L"HKCU\\QuillTest"), 2);
    EXPECT_EQ(Read(L"HKCU\\QuillTest"), L"");
    RegDeleteValueW(HKEY_CURRENT_USER, L"QuillTest");
}

TEST_F(RegistryTest, ListsSubkeysAndValues)
{
    EXPECT_EQ(Items(Path(), 0, kNothingThere), L"before");
    Make(L"a");
    Make(L"c");
    Make(L"b\\below");
    Set(L"one", REG_SZ, L"");
    Set(L"", REG_DWORD, L"");
    for (const int view : {1, 2, 0}) { // the test bench has one only, and takes the flags of both
        registry_.Put(L"Access64", view);
        EXPECT_EQ(Items(Path(), 3), L"a b c (12)");
    }
    EXPECT_EQ(Items(Path(L"a"), 0, kNothingThere), L"before");
    EXPECT_EQ(Items(Path(L"none"), 0, kNotFound), L"before");
    registry_.Put(L"ConvertArr", false);
    EXPECT_EQ(Items(Path(), 3), L"a b c (8)");
    for (const int type : {1, 2}) {
        registry_.Put(L"ItemType", type);
        const std::wstring names = Items(Path(), 2);
        EXPECT_TRUE(names == L"one  (8)" || names == L" one (8)") << Narrow(names);
    }
}

TEST_F(RegistryTest, GetItemsAssignsToPlainVariables)
{
    Make(L"a");
    Variant array(MakeArray(VT_I4, 2));
    EXPECT_EQ(registry_.Call(L"GetItems", Path(), Reference(VT_ARRAY | VT_I4, &V_ARRAY(&array))),
              0);
    EXPECT_EQ(Elements(array), L"0 0 (3)");
    EXPECT_EQ(registry_.Call(L"GetItems", Path(), &array), 1); // a variable that holds an array
    EXPECT_EQ(Elements(array), L"a (12)");
    LONG number = 7;
    const auto intoNumber = [&] { registry_.Call(L"GetItems", Path(), Reference(VT_I4, &number)); };
    EXPECT_EQ(ErrorOf(intoNumber).number, 0x800A000D);
    EXPECT_EQ(number, 7);
}

TEST_F(RegistryTest, NamesOfAnyLength)
{
    const std::wstring keyName(255, L'k');
    const std::wstring valueName(16'383, L'v');
    Make(keyName);
    Set(valueName, REG_SZ, L"x\0"s);
    EXPECT_EQ(Items(Path(), 1), keyName + L" (12)");
    EXPECT_EQ(Found(L"k*", Path()), L'\\' + keyName);
    registry_.Put(L"ItemType", 1);
    EXPECT_EQ(Items(Path(), 1), valueName + L" (12)");
    EXPECT_EQ(Found(L"*v", Path()), L'\\' + valueName);
    EXPECT_EQ(Read(Path(valueName)), L"x");
    EXPECT_EQ(registry_.Call(L"RegEntryExists", Path(valueName)), 2);
    EXPECT_EQ(registry_.Call(L"RegEntryExists", Path(valueName + L"v")), 0);
}

TEST_F(RegistryTest, SearchesDepthFirst)
{
    for (const wchar_t* path : {L"b", L"a\\x\\deep\\er", L"a\\hit", L"a\\x\\Hit", L"c\\hit2"})
        Make(path);
    Set(L"hit", REG_SZ, L"");
    const struct {
        const wchar_t* item;
        int levels;
        std::vector<std::wstring> expected; // each found with one more in Continue
    } cases[] = {
        {L"hit", 4, {L"\\a\\hit", L"\\a\\x\\Hit"}},
        {L"HIT*", 4, {L"\\a\\hit", L"\\a\\x\\Hit", L"\\c\\hit2"}},
        {L"hit?", 2, {L"\\c\\hit2"}},
        {L"er", 3, {}},
        {L"er", 4, {L"\\a\\x\\deep\\er"}},
        {L"", 64, {}},
        {L"a\\hit", 64, {}}, // names are compared, not paths
    };
    for (const auto& [item, levels, expected] : cases) {
        SCOPED_TRACE(Narrow(item));
        registry_.Put(L"KeyLevels", levels);
        int skip = 0;
        for (const std::wstring& path : expected) {
            registry_.Put(L"Continue", skip++);
            EXPECT_EQ(Found(item, Path()), path);
        }
        registry_.Put(L"Continue", skip);
        EXPECT_EQ(Found(item, Path(), kNothingThere), L"");
    }
    registry_.Put(L"Continue", 0);
    registry_.Put(L"KeyLevels", 4);
    EXPECT_EQ(Found(L"hit", L"hkcu\\"s + kPath + L"\\a\\"), L"hkcu\\"s + kPath + L"\\a\\hit");
    EXPECT_EQ(Found(L"registry", L"HKCU\\Software\\QuillTest"), L"");
    EXPECT_EQ(Found(L"hit", Path(L"none"), kNotFound), L"");
}

TEST_F(RegistryTest, SearchesValues)
{
    const RegistryKey sub = Make(L"sub\\below");
    Set(L"name", REG_SZ, L"x\0"s);
    Set(L"back\\slash", REG_SZ, L"");
    ASSERT_EQ(RegSetValueExW(sub.get(), L"Name", 0, REG_SZ, nullptr, 0), 0);
    ASSERT_EQ(RegSetValueExW(sub.get(), nullptr, 0, REG_SZ, nullptr, 0), 0);
    registry_.Put(L"ItemType", 1);
    EXPECT_EQ(Found(L"back*", Path()), L"\\back\\slash");
    EXPECT_EQ(Found(L"sub", Path(), kNothingThere), L"");
    registry_.Put(L"Continue", 1);
    EXPECT_EQ(Found(L"name", Path()), L"\\sub\\below\\Name");
    registry_.Put(L"KeyLevels", 2); // the key itself, and those in it
    EXPECT_EQ(Found(L"name", Path(), kNothingThere), L"");
    registry_.Put(L"Continue", 0);
    registry_.Put(L"KeyLevels", 3);
    const std::wstring defaultValue = Found(L"", Path());
    EXPECT_EQ(defaultValue, L"\\sub\\below\\"); // as RegRead takes it
    EXPECT_EQ(Read(Path() + defaultValue), L"");
}

// A link to nowhere stands for all keys that cannot be opened.
TEST_F(RegistryTest, SearchPassesOverKeysThatCannotBeOpened)
{
    const RegistryKey link = Make(L"a", REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE);
    const std::wstring target = L"\\Registry\\Machine\\QuillTest\\nowhere";
    ASSERT_EQ(RegSetValueExW(link.get(), L"SymbolicLinkValue", 0, REG_LINK,
                             reinterpret_cast<const BYTE*>(target.data()),
                             static_cast<DWORD>(target.size() * 2)),
              0);
    Make(L"b\\hit");
    EXPECT_EQ(registry_.Call(L"RegEntryExists", Path(L"a")), 0);
    EXPECT_EQ(Found(L"hit", Path()), L"\\b\\hit");
    EXPECT_EQ(Found(L"a", Path()), L"\\a"); // its name is there
    // The usual ways to delete a key would follow the link.
    const auto deleteKey = FindSystemFunction<LONG NTAPI(HANDLE)>(L"ntdll.dll", "NtDeleteKey");
    EXPECT_EQ(deleteKey(link.get()), 0);
}

TEST_F(RegistryTest, ValuesMayChangeBetweenMeasuringAndReading)
{
    const std::string large(5000, 'x');
    SetBytes(L"value", REG_BINARY, "x");
    registry_.Put(L"ConvertArr", false);
    std::atomic<bool> done = false;
    std::thread writer([&] {
        while (!done) {
            SetBytes(L"value", REG_BINARY, large);
            SetBytes(L"value", REG_BINARY, "x");
        }
    });
    std::set<size_t> sizes;
    for (int round = 0; round < 2000; ++round) {
        const Value value = Read(Path(L"value"));
        if (V_VT(&value) == (VT_ARRAY | VT_UI1))
            sizes.insert(DataOf<BYTE>(*V_ARRAY(&value)).size());
    }
    done = true;
    writer.join();
    EXPECT_EQ(sizes, (std::set<size_t>{1, large.size()}));
}

} // namespace
} // namespace quill::test
