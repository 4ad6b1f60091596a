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

    const RegistryKey key_;
    ScriptObject registry_ = ScriptObject::Make(L"Registry");
};

TEST_F(RegistryTest, PropertiesKeepWithinTheirLimits)
{
    const struct {
        const wchar_t* name;
        int initial;
        int low;
        int high;
    } cases[] = {{L"ItemType", 0, 0, 2},
                 {L"Access64", 0, 0, 2},
                 {L"KeyLevels", 4, 1, 64},
                 {L"Continue", 0, 0, 64}};
    for (const auto& [name, initial, low, high] : cases) {
        EXPECT_EQ(registry_.Get(name), initial) << Narrow(name);
        for (const int value : {low, high}) {
            registry_.Put(name, value);
            for (const int ignored : {low - 1, high + 1, INT_MIN, INT_MAX})
                registry_.Put(name, ignored);
            EXPECT_EQ(registry_.Get(name), value) << Narrow(name);
        }
    }
    EXPECT_EQ(registry_.Get(L"ConvertArr"), true);
    EXPECT_EQ(registry_.Get(L"ConvertStr"), true);
}

TEST_F(RegistryTest, RootsHaveTwoNamesInAnyCase)
{
    for (const wchar_t* name :
         {L"HKEY_CLASSES_ROOT", L"HKCR", L"HKEY_CURRENT_USER", L"hkcu", L"HKEY_LOCAL_MACHINE",
          L"HKLM", L"Hkey_Users", L"HKU", L"HKEY_CURRENT_CONFIG", L"HKCC"}) {
        for (const wchar_t* member : {L"RegEntryExists", L"RegEntryExists1"}) {
            EXPECT_EQ(registry_.Call(member, name), 1) << Narrow(name);
            EXPECT_EQ(registry_.Call(member, name + L"\\"s), 1) << Narrow(name);
        }
        EXPECT_EQ(registry_.Get(L"ErrorCode"), 0);
    }
    for (const std::wstring& path :
         {L""s, L"\\"s, L"HK"s, L"HKEY_PERFORMANCE_DATA"s, L"HKEY_DYN_DATA"s, L" HKCU"s,
          L"HKCU/Software"s, L"\\HKCU"s, L"HKCU\0\\Software"s, std::wstring(100'000, L'H')}) {
        SCOPED_TRACE(Narrow(path.substr(0, 50)));
        EXPECT_EQ(Items(path, 0, kInvalidPath), L"before");
        EXPECT_EQ(Found(L"*", path, kInvalidPath), L"");
        EXPECT_TRUE(IsEmpty(Read(path, kInvalidPath)));
        for (const wchar_t* member : {L"RegEntryExists", L"RegEntryExists1"}) {
            EXPECT_EQ(registry_.Call(member, path), 0);
            EXPECT_EQ(registry_.Get(L"ErrorCode"), kInvalidPath);
        }
    }
}

TEST_F(RegistryTest, ReadsEveryType)
{
    SetEnvironmentVariableW(L"QUILLTEST", L"expanded");
    const struct {
        DWORD type;
        std::wstring stored;    // as UTF-16, also where it means bytes
        const wchar_t* array;   // what comes back: an array, or else
        std::wstring converted; // text with ConvertStr
        std::wstring raw;       // and without
    } texts[] = {
        {REG_SZ, L"text\0"s, nullptr, L"text", L"text"},
        {REG_SZ, L"", nullptr, L"", L""},
        {REG_SZ, L"\0"s, nullptr, L"", L""},
        {REG_SZ, L"no end"s, nullptr, L"no end", L"no end"},
        {REG_SZ, L"a\0b\0\0"s, nullptr, L"a\0b\0"s, L"a\0b\0"s},
        {REG_SZ, L"%QUILLTEST%\0"s, nullptr, L"%QUILLTEST%", L"%QUILLTEST%"},
        {REG_EXPAND_SZ, L"<%QUILLTEST%>\0"s, nullptr, L"<expanded>", L"<%QUILLTEST%>"},
        {REG_EXPAND_SZ, L"", nullptr, L"", L""},
        {REG_EXPAND_SZ, L"%NONE%"s, nullptr, L"%NONE%", L"%NONE%"},
        {REG_MULTI_SZ, L"a\0b\0\0"s, L"a b ", L"", L"a\0b\0"s},
        {REG_MULTI_SZ, L"a\0\0b\0\0"s, L"a  b ", L"", L"a\0\0b\0"s},
        {REG_MULTI_SZ, L"a\0b\0"s, L"a b ", L"", L"a\0b"s}, // a NUL is missing
        {REG_MULTI_SZ, L"a\0b"s, L"a b ", L"", L"a\0b"s},   // and another one
        {REG_MULTI_SZ, L"\0"s, L"", L"", L""},
        {REG_MULTI_SZ, L"", L"", L"", L""},
    };
    for (const auto& [type, stored, array, converted, raw] : texts) {
        SCOPED_TRACE(Narrow(stored) + ' ' + std::to_string(type));
        Set(L"value", type, stored);
        registry_.Put(L"ConvertStr", true);
        if (array) {
            EXPECT_EQ(Elements(Read(Path(L"value"))), array + L"(12)"s);
            registry_.Put(L"ConvertArr", false);
            EXPECT_EQ(Elements(Read(Path(L"value"))), array + L"(8)"s);
            registry_.Put(L"ConvertArr", true);
        } else {
            EXPECT_EQ(Read(Path(L"value")), converted);
        }
        registry_.Put(L"ConvertStr", false);
        EXPECT_EQ(Read(Path(L"value")), raw);
    }

    const struct {
        DWORD type;
        std::string bytes;
        const wchar_t* expected;
    } binaries[] = {
        {REG_BINARY, "\x01\xFF\0"s, L"1 255 0 "},
        {REG_BINARY, "", L""},
        {REG_QWORD, "\x08\x07\x06\x05\x04\x03\x02\x01", L"8 7 6 5 4 3 2 1 "},
    };
    for (const auto& [type, bytes, expected] : binaries) {
        SetBytes(L"value", type, bytes);
        registry_.Put(L"ConvertArr", true);
        EXPECT_EQ(Elements(Read(Path(L"value"))), expected + L"(12)"s);
        registry_.Put(L"ConvertArr", false);
        EXPECT_EQ(Elements(Read(Path(L"value"))), expected + L"(17)"s);
    }

    for (const auto& [bytes, expected] :
         {std::pair{"\xFE\xFF\xFF\xFF"s, -2L}, {"\x02"s, 2L}, {""s, 0L}, {"\x01\0\0\0\xFF"s, 1L}}) {
        SetBytes(L"value", REG_DWORD, bytes);
        EXPECT_EQ(Read(Path(L"value")), expected) << bytes.size();
    }
    for (const DWORD type :
         std::initializer_list<DWORD>{REG_NONE, REG_DWORD_BIG_ENDIAN, REG_RESOURCE_LIST, 12345}) {
        SetBytes(L"value", type, "1234");
        EXPECT_TRUE(IsEmpty(Read(Path(L"value"), kNothingThere))) << type;
    }
}

TEST_F(RegistryTest, ReadsByPathAndName)
{
    Make(L"sub");
    Set(L"", REG_SZ, L"default\0"s);
    Set(L"name", REG_SZ, L"plain\0"s);
    Set(L"a\\b", REG_SZ, L"with a backslash\0"s);
    EXPECT_EQ(Read(Path(L"name")), L"plain");
    EXPECT_EQ(Read(Path() + L"\\"), L"default");
    EXPECT_EQ(registry_.Call(L"RegRead", Path(), L"name"), L"plain");
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
    Set(L"name", REG_SZ, L"");
    Set(L"a\\b", REG_SZ, L"");
    Set(L"sub\\", REG_SZ, L"");
    std::wstring steps;
    while (steps.size() < kValueNameLimit)
        steps += L"\\x";
    const struct {
        std::wstring path;
        int kind;
        long code;
        int plainKind;
        long plainCode;
    } cases[] = {
        {Path(), 1, 0, 1, 0},
        {Path(L"sub"), 1, 0, 1, 0},
        {Path(L"SUB"), 1, 0, 1, 0},
        {Path(L"name"), 2, 0, 2, 0},
        {Path(L"NAME"), 2, 0, 2, 0},
        {Path(L"a\\b"), 2, 0, 0, kNotFound},
        {Path(L"none"), 0, kNothingThere, 0, kNotFound},
        {Path(L"none\\a\\b\\c"), 0, kNothingThere, 0, kNotFound},
        {L"HKCU\\no such name", 0, kNothingThere, 0, kNotFound},
        {Path(L"none" + steps), 0, kNothingThere, 0, kNotFound},
        {L"HKCU\\" + std::wstring(5'000'000, L'\\'), 0, kNothingThere, 0, kNotFound},
    };
    for (const auto& [path, kind, code, plainKind, plainCode] : cases) {
        SCOPED_TRACE(Narrow(path.substr(0, 80)));
        EXPECT_EQ(registry_.Call(L"RegEntryExists", path), kind);
        EXPECT_EQ(registry_.Get(L"ErrorCode"), code);
        EXPECT_EQ(registry_.Call(L"RegEntryExists1", path), plainKind);
        EXPECT_EQ(registry_.Get(L"ErrorCode"), plainCode);
    }

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
    EXPECT_EQ(Items(Path(), 3), L"a b c (12)");
    EXPECT_EQ(Items(Path() + L"\\", 3), L"a b c (12)");
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
    const Variant reference = Reference(VT_ARRAY | VT_I4, &V_ARRAY(&array));
    EXPECT_EQ(registry_.Call(L"GetItems", Path(), reference), 0);
    EXPECT_EQ(registry_.Get(L"ErrorCode"), kInvalidPath);
    EXPECT_EQ(Elements(array), L"0 0 (3)");
    EXPECT_EQ(registry_.Call(L"GetItems", Path(), &array), 1); // a variable that holds an array
    EXPECT_EQ(Elements(array), L"a (12)");
    EXPECT_EQ(registry_.Call(L"GetItems", Path(), L"by value"), 1);
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
    EXPECT_EQ(registry_.Call(L"RegEntryExists", Path(keyName)), 1);
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
        {L"*", 1, {L"\\a", L"\\b", L"\\c"}},
        {L"er", 3, {}},
        {L"er", 4, {L"\\a\\x\\deep\\er"}},
        {L"er", 64, {L"\\a\\x\\deep\\er"}},
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
    EXPECT_EQ(Found(L"name", Path()), L"\\name");
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

// The registry of the test bench has one view only: that the flags of both are taken is all that
// can be seen there.
TEST_F(RegistryTest, BothViewsAreAsked)
{
    Make(L"a");
    Set(L"name", REG_SZ, L"x\0"s);
    for (const int view : {0, 1, 2}) {
        registry_.Put(L"Access64", view);
        EXPECT_EQ(Items(Path(), 1), L"a (12)") << view;
        EXPECT_EQ(Read(Path(L"name")), L"x") << view;
        EXPECT_EQ(Found(L"a", Path()), L"\\a") << view;
    }
}

} // namespace
} // namespace quill::test
