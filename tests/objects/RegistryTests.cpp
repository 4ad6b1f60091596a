// What a script's table of Registry cannot do: variables of typed languages, keys that stay shut.
#include <gtest/gtest.h>

#include "core/Platform.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

class RegistryTest : public testing::Test {
protected:
    RegistryTest() { Make(L""); }
    ~RegistryTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, kPath); }

    static constexpr wchar_t kPath[] = L"Software\\QuillTest";

    static RegistryKey Make(const std::wstring& below, DWORD options = 0)
    {
        HKEY made = nullptr;
        const std::wstring path = std::wstring(kPath) + below;
        if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS,
                            nullptr, &made, nullptr) != ERROR_SUCCESS)
            throw std::runtime_error("cannot make " + Narrow(path));
        return RegistryKey(made);
    }

    const std::wstring top_ = std::wstring(L"HKCU\\") + kPath;
    ScriptObject registry_ = ScriptObject::Make(L"Registry");
};

TEST_F(RegistryTest, GetItemsAssignsToPlainVariables)
{
    Make(L"\\a");
    Variant array(MakeArray(VT_I4, 2));
    EXPECT_EQ(registry_.Call(L"GetItems", top_, Reference(VT_ARRAY | VT_I4, &V_ARRAY(&array))), 0);
    EXPECT_EQ(V_VT(&array), VT_ARRAY | VT_I4);
    LONG number = 7;
    const auto intoNumber = [&] { registry_.Call(L"GetItems", top_, Reference(VT_I4, &number)); };
    EXPECT_EQ(ErrorOf(intoNumber).number, 0x800A000D);
    EXPECT_EQ(number, 7);
}

// A link to nowhere stands for all keys that cannot be opened.
TEST_F(RegistryTest, SearchPassesOverKeysThatCannotBeOpened)
{
    const RegistryKey link = Make(L"\\a", REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE);
    const std::wstring target = L"\\Registry\\Machine\\QuillTest\\nowhere";
    ASSERT_EQ(RegSetValueExW(link.get(), L"SymbolicLinkValue", 0, REG_LINK,
                             reinterpret_cast<const BYTE*>(target.data()),
                             static_cast<DWORD>(target.size() * 2)),
              0);
    Make(L"\\b\\hit");
    EXPECT_EQ(registry_.Call(L"RegEntryExists", top_ + L"\\a"), 0);
    EXPECT_EQ(registry_.Call(L"Search", L"hit", top_), top_ + L"\\b\\hit");
    EXPECT_EQ(registry_.Call(L"Search", L"a", top_), top_ + L"\\a"); // its name is there
    // The usual ways to delete a key would follow the link.
    const auto deleteKey = FindSystemFunction<LONG NTAPI(HANDLE)>(L"ntdll.dll", "NtDeleteKey");
    EXPECT_EQ(deleteKey(link.get()), 0);
}

} // namespace
} // namespace quill::test
