#include "services/registryfn.h"

#include "core/Text.h"

#include <algorithm>

namespace quill {

HKEY RootKeyOf(std::wstring name)
{
    static const struct {
        const wchar_t* longName;
        const wchar_t* shortName;
        HKEY root;
    } roots[] = {
        {L"HKEY_CLASSES_ROOT", L"HKCR", HKEY_CLASSES_ROOT},
        {L"HKEY_CURRENT_USER", L"HKCU", HKEY_CURRENT_USER},
        {L"HKEY_LOCAL_MACHINE", L"HKLM", HKEY_LOCAL_MACHINE},
        {L"HKEY_USERS", L"HKU", HKEY_USERS},
        {L"HKEY_CURRENT_CONFIG", L"HKCC", HKEY_CURRENT_CONFIG},
    };
    name = UpperCase(std::move(name));
    for (const auto& [longName, shortName, root] : roots)
        if (name == longName || name == shortName) return root;
    return nullptr;
}

LONG OpenKey(HKEY parent, const std::wstring& path, REGSAM access, RegistryKey& key)
{
    if (path.size() > kKeyPathLimit) return ERROR_FILE_NOT_FOUND;
    return RegOpenKeyExW(parent, path.c_str(), 0, access, Into(key));
}

LONG FindValue(HKEY key, const std::wstring& name)
{
    if (name.size() > kValueNameLimit) return ERROR_FILE_NOT_FOUND;
    return RegQueryValueExW(key, name.c_str(), nullptr, nullptr, nullptr, nullptr);
}

std::optional<RegistryValue> ReadValue(HKEY key, const std::wstring& name)
{
    if (name.size() > kValueNameLimit) return {};
    RegistryValue value{};
    LONG result = ERROR_MORE_DATA;
    // Others may change the value after it was measured. What has become larger is measured again;
    // for a smaller one, the second call returns its size and type.
    while (result == ERROR_MORE_DATA) {
        DWORD size = 0;
        result = RegQueryValueExW(key, name.c_str(), nullptr, &value.type, nullptr, &size);
        if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA) return {};
        size = std::max<DWORD>(size, 1); // a buffer without room would count as none
        value.bytes.resize(size);
        result =
            RegQueryValueExW(key, name.c_str(), nullptr, &value.type, value.bytes.data(), &size);
        if (result == ERROR_SUCCESS) value.bytes.resize(size);
    }
    if (result != ERROR_SUCCESS) return {};
    return value;
}

bool NameAt(HKEY key, RegistryItem item, DWORD index, std::wstring& name)
{
    DWORD length = 0;
    LONG result = ERROR_MORE_DATA;
    // Room for any subkey, and for all but a few values; then for any value.
    for (const size_t room : {size_t{256}, kValueNameLimit + 1}) {
        name.resize(room);
        length = static_cast<DWORD>(room);
        result = item == RegistryItem::Value ? RegEnumValueW(key, index, name.data(), &length,
                                                             nullptr, nullptr, nullptr, nullptr)
                                             : RegEnumKeyExW(key, index, name.data(), &length,
                                                             nullptr, nullptr, nullptr, nullptr);
        if (result != ERROR_MORE_DATA) break;
    }
    name.resize(result == ERROR_SUCCESS ? length : 0);
    return result == ERROR_SUCCESS;
}

RegistrySearch::RegistrySearch(const std::wstring& pattern, RegistryItem item, REGSAM access,
                               LONG skip)
    : pattern_(UpperCase(pattern)), item_(item), access_(access), skip_(skip)
{
}

std::optional<std::wstring> RegistrySearch::Below(HKEY key, const std::wstring& path, LONG levels)
{
    path_ = path;
    if (!Walk(key, levels)) return {};
    return std::move(path_);
}

bool RegistrySearch::Walk(HKEY key, LONG levels)
{
    std::wstring name;
    if (item_ == RegistryItem::Value) {
        for (DWORD index = 0; NameAt(key, RegistryItem::Value, index, name); ++index) {
            if (!IsHit(name)) continue;
            path_.append(L"\\").append(name);
            return true;
        }
        if (levels == 1) return false;
    }
    const size_t length = path_.size();
    for (DWORD index = 0; NameAt(key, RegistryItem::Subkey, index, name); ++index) {
        path_.append(L"\\").append(name);
        if (item_ == RegistryItem::Subkey && IsHit(name)) return true;
        RegistryKey subkey;
        if (levels > 1 && OpenKey(key, name, access_, subkey) == ERROR_SUCCESS &&
            Walk(subkey.get(), levels - 1))
            return true;
        path_.resize(length);
    }
    return false;
}

bool RegistrySearch::IsHit(const std::wstring& name)
{
    return IsLike(UpperCase(name), pattern_) && skip_-- == 0;
}

} // namespace quill
