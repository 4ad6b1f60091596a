#include "services/Profile.h"

#include "core/Catalogue.h"
#include "core/Text.h"

namespace quill {

namespace {

constexpr PublishedError kProfileNotFound{ErrorNumber(0x8004033F), L"Profile not found: "};
constexpr PublishedError kNoProfile{ErrorNumber(0x80040340), L"No Profile defined."};
constexpr PublishedError kValueTooLong{ErrorNumber(0x80040341),
                                       L"Key value length is beyond maximum (0x2000)."};
constexpr PublishedError kSectionTooLong{ErrorNumber(0x80040341),
                                         L"Section entries beyond maximum (0x8000)."};

// Buffer sizes and limits, in UTF-16 units.
constexpr DWORD kValueLimit = 8192;
constexpr DWORD kSectionLimit = 32768;

// What the platform puts into a buffer of this size; `fill` returns its length.
template <class Fill>
std::wstring Filled(DWORD size, Fill fill)
{
    std::wstring buffer(size, L'\0');
    buffer.resize(fill(buffer.data(), size));
    return buffer;
}

} // namespace

CREATABLE(Profile)

void Profile::SetFile(const std::wstring& path)
{
    if (FileExists(path))
        file_ = path;
    else
        Refuse(kProfileNotFound, path);
}

std::wstring Profile::GetValue(const std::wstring& section, const std::wstring& key) const
{
    if (!RequireFile()) return {};
    return Filled(kValueLimit, [&](wchar_t* buffer, DWORD size) {
        return GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", buffer, size,
                                        file_.c_str());
    });
}

std::wstring Profile::GetSection(const std::wstring& section, bool convert) const
{
    if (!RequireFile()) return {};
    const std::wstring entries = Filled(kSectionLimit, [&](wchar_t* buffer, DWORD size) {
        return GetPrivateProfileSectionW(section.c_str(), buffer, size, file_.c_str());
    });
    return convert ? NulsToLineBreaks(entries) : entries;
}

std::wstring Profile::GetSectionNames(bool convert) const
{
    if (!RequireFile()) return {};
    const std::wstring names = Filled(kSectionLimit, [&](wchar_t* buffer, DWORD size) {
        return GetPrivateProfileSectionNamesW(buffer, size, file_.c_str());
    });
    return convert ? NulsToLineBreaks(names) : names;
}

bool Profile::SetValue(const std::wstring& section, const std::wstring& key,
                       const std::wstring& entry)
{
    if (!RequireFile()) return false;
    if (entry.size() > kValueLimit) return Refuse(kValueTooLong);
    // No key: the whole section goes. No entry: the key goes.
    const wchar_t* keyText = key.empty() ? nullptr : key.c_str();
    const wchar_t* entryText = key.empty() || entry.empty() ? nullptr : entry.c_str();
    return WritePrivateProfileStringW(section.c_str(), keyText, entryText, file_.c_str()) != FALSE;
}

bool Profile::SetSection(const std::wstring& section, const std::wstring& entries, bool convert)
{
    if (!RequireFile()) return false;
    if (entries.size() > kSectionLimit) return Refuse(kSectionTooLong);
    // With two more at the end the list is ended, even where the script forgot it.
    const std::wstring list = (convert ? LineBreaksToNuls(entries) : entries) + L'\0';
    return WritePrivateProfileSectionW(section.c_str(), list.c_str(), file_.c_str()) != FALSE;
}

bool Profile::RequireFile() const
{
    return !file_.empty() || Refuse(kNoProfile);
}

} // namespace quill
