#include "services/Registry.h"

#include <algorithm>
#include <cstring>

#include "core/Catalogue.h"
#include "core/Paths.h"
#include "core/Text.h"
#include "core/quillfn.h"
#include "services/Bytes.h"
#include "services/Lists.h"

namespace quill {

namespace {

std::wstring WithoutTrailingBackslash(std::wstring path)
{
    if (path.ends_with(L'\\')) path.pop_back();
    return path;
}

// Where the name of a value begins: behind the last backslash.
size_t NameOffset(const std::wstring& path) noexcept
{
    return path.rfind(L'\\') + 1; // 0 where there is none
}

// The text of a value, without the NUL that ends it. One that was stored without keeps all it has.
std::wstring StoredText(const std::vector<BYTE>& bytes)
{
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    if (text.ends_with(L'\0')) text.pop_back();
    return text;
}

// The strings that a NUL follows, and what is behind the last NUL.
std::vector<std::wstring> SplitAtNuls(const std::wstring& text)
{
    std::vector<std::wstring> parts = SplitAt(text, {L"\0", 1});
    if (parts.back().empty()) parts.pop_back();
    return parts;
}

} // namespace

CREATABLE(Registry)

LONG Registry::GetItems(const std::wstring& path, VARIANT& items)
{
    errorCode_ = kInvalidPath;
    if (IsArrayByReference(items)) return 0;
    const auto place = PlaceOf(WithoutTrailingBackslash(path));
    if (!place) return 0;
    RegistryKey key;
    errorCode_ = OpenKey(place->root, place->path, Access(), key);
    if (errorCode_ != ERROR_SUCCESS) return 0;

    DWORD subkeys = 0;
    DWORD values = 0;
    errorCode_ = RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                                  &values, nullptr, nullptr, nullptr, nullptr);
    if (errorCode_ != ERROR_SUCCESS) return 0;
    const DWORD count = Item() == RegistryItem::Value ? values : subkeys;
    if (count == 0) {
        errorCode_ = kNothingThere;
        return 0;
    }
    std::vector<std::wstring> names;
    std::wstring name;
    while (names.size() < count &&
           NameAt(key.get(), Item(), static_cast<DWORD>(names.size()), name))
        names.push_back(name);
    Assign(items, MakeStringArray(names, convertArr_));
    return static_cast<LONG>(names.size());
}

std::wstring Registry::Search(const std::wstring& item, const std::wstring& path)
{
    const std::wstring start = WithoutTrailingBackslash(path);
    const auto place = PlaceOf(start);
    if (!place) return {};
    RegistryKey key;
    errorCode_ = OpenKey(place->root, place->path, Access(), key);
    if (errorCode_ != ERROR_SUCCESS) return {};
    const auto found =
        RegistrySearch(item, Item(), Access(), continue_).Below(key.get(), start, keyLevels_);
    if (!found) errorCode_ = kNothingThere;
    return found.value_or(std::wstring());
}

Variant Registry::RegRead(const std::wstring& item, const std::wstring& valueName)
{
    auto place = PlaceOf(item);
    errorCode_ = kInvalidPath;
    if (!place || place->path.empty()) return {};
    std::wstring name = valueName;
    if (name.empty() && !place->path.ends_with(L'\\')) {
        const size_t offset = NameOffset(place->path);
        name = place->path.substr(offset);
        place->path = WithoutTrailingBackslash(place->path.substr(0, offset));
    }
    errorCode_ = kNothingThere;
    RegistryKey key;
    if (OpenKey(place->root, place->path, Access(), key) != ERROR_SUCCESS) return {};
    const auto stored = ReadValue(key.get(), name);
    if (!stored) return {};
    Variant value = Convert(*stored);
    if (V_VT(&value) != VT_EMPTY) errorCode_ = 0;
    return value;
}

LONG Registry::RegEntryExists(const std::wstring& item)
{
    const auto place = PlaceOf(item);
    if (!place) return kNothing;
    if (IsKey(*place)) return kKey;
    // The name of a value may have backslashes in it, so each of them may be where it begins. It
    // cannot be longer than its limit, and a path that is too long for a key and a name is nothing.
    const std::wstring& path = place->path;
    size_t separator =
        path.size() <= kKeyPathLimit + 1 + kValueNameLimit ? path.rfind(L'\\') : std::wstring::npos;
    while (separator != std::wstring::npos && path.size() - separator - 1 <= kValueNameLimit) {
        if (FindValueAt({place->root, path.substr(0, separator)}, path.substr(separator + 1)) ==
            ERROR_SUCCESS)
            return kValue;
        if (separator == 0) break;
        separator = path.rfind(L'\\', separator - 1);
    }
    errorCode_ = kNothingThere;
    return kNothing;
}

LONG Registry::RegEntryExists1(const std::wstring& item)
{
    const auto place = PlaceOf(item);
    if (!place) return kNothing;
    if (IsKey(*place)) return kKey;
    const size_t offset = NameOffset(place->path);
    errorCode_ = FindValueAt({place->root, WithoutTrailingBackslash(place->path.substr(0, offset))},
                             place->path.substr(offset));
    return errorCode_ == ERROR_SUCCESS ? kValue : kNothing;
}

// None, with an error code, if the path does not begin with a root.
std::optional<Registry::Place> Registry::PlaceOf(const std::wstring& path)
{
    const size_t separator = path.find(L'\\');
    const HKEY root = RootKeyOf(path.substr(0, separator));
    errorCode_ = root ? ERROR_SUCCESS : kInvalidPath;
    if (!root) return {};
    return Place{root,
                 separator == std::wstring::npos ? std::wstring() : path.substr(separator + 1)};
}

REGSAM Registry::Access() const
{
    constexpr REGSAM views[] = {0, KEY_WOW64_64KEY, KEY_WOW64_32KEY};
    return KEY_READ | views[access64_];
}

RegistryItem Registry::Item() const
{
    return itemType_ == 0 ? RegistryItem::Subkey : RegistryItem::Value;
}

bool Registry::IsKey(const Place& entry) const
{
    RegistryKey key;
    return entry.path.empty() || OpenKey(entry.root, entry.path, Access(), key) == ERROR_SUCCESS;
}

LONG Registry::FindValueAt(const Place& place, const std::wstring& name) const
{
    RegistryKey key;
    const LONG result = OpenKey(place.root, place.path, Access(), key);
    return result == ERROR_SUCCESS ? FindValue(key.get(), name) : result;
}

// Empty for a type that scripts have nothing for.
Variant Registry::Convert(const RegistryValue& value) const
{
    switch (value.type) {
    case REG_SZ: return Variant(StoredText(value.bytes));
    case REG_EXPAND_SZ: {
        const std::wstring text = StoredText(value.bytes);
        // What follows a NUL is not expanded, and is dropped.
        return Variant(convertStr_ ? ExpandEnvironment(text.c_str()) : text);
    }
    case REG_MULTI_SZ: {
        const std::wstring text = StoredText(value.bytes);
        return convertStr_ ? MakeStringArray(SplitAtNuls(text), convertArr_) : Variant(text);
    }
    case REG_DWORD: {
        LONG number = 0;
        memcpy(&number, value.bytes.data(), std::min(value.bytes.size(), sizeof number));
        return Variant(number);
    }
    case REG_BINARY:
    case REG_QWORD: return ConvertBytes(value.bytes);
    default: return {};
    }
}

Variant Registry::ConvertBytes(const std::vector<BYTE>& bytes) const
{
    if (!convertArr_) return MakeByteArray(bytes);
    std::vector<Variant> elements(bytes.size());
    for (size_t index = 0; index < bytes.size(); ++index) {
        V_UI1(&elements[index]) = bytes[index];
        V_VT(&elements[index]) = VT_UI1;
    }
    return MakeList(std::move(elements));
}

} // namespace quill
