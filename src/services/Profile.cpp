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
constexpr size_t kValueLimit = 8192;
constexpr size_t kSectionLimit = 32768;

// The first `count` units of a buffer that the platform filled.
std::wstring Filled(std::wstring buffer, DWORD count)
{
    buffer.resize(count);
    return buffer;
}

} // namespace

CREATABLE(Profile)

void Profile::SetFile(const std::wstring& path)
{
    std::wstring tested = path;
    if (FileExists(tested, false))
        file_ = path;
    else
        RaiseUnlessQuiet(kProfileNotFound, path);
}

std::wstring Profile::GetValue(const std::wstring& section, const std::wstring& key) const
{
    if (!RequireFile()) return {};
    std::wstring buffer(kValueLimit, L'\0');
    const DWORD count = GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", buffer.data(),
                                                 kValueLimit, file_.c_str());
    return Filled(std::move(buffer), count);
}

std::wstring Profile::GetSection(const std::wstring& section, bool convert) const
{
    if (!RequireFile()) return {};
    std::wstring buffer(kSectionLimit, L'\0');
    const DWORD count =
        GetPrivateProfileSectionW(section.c_str(), buffer.data(), kSectionLimit, file_.c_str());
    const std::wstring entries = Filled(std::move(buffer), count);
    return convert ? NulsToLineBreaks(entries) : entries;
}

std::wstring Profile::GetSectionNames(bool convert) const
{
    if (!RequireFile()) return {};
    std::wstring buffer(kSectionLimit, L'\0');
    const DWORD count = GetPrivateProfileSectionNamesW(buffer.data(), kSectionLimit, file_.c_str());
    const std::wstring names = Filled(std::move(buffer), count);
    return convert ? NulsToLineBreaks(names) : names;
}

bool Profile::SetValue(const std::wstring& section, const std::wstring& key,
                       const std::wstring& entry)
{
    if (!RequireFile()) return false;
    if (entry.size() > kValueLimit) {
        RaiseUnlessQuiet(kValueTooLong);
        return false;
    }
    // No key: the whole section goes. No entry: the key goes.
    const wchar_t* keyText = key.empty() ? nullptr : key.c_str();
    const wchar_t* entryText = key.empty() || entry.empty() ? nullptr : entry.c_str();
    return WritePrivateProfileStringW(section.c_str(), keyText, entryText, file_.c_str()) != FALSE;
}

bool Profile::SetSection(const std::wstring& section, const std::wstring& entries, bool convert)
{
    if (!RequireFile()) return false;
    if (entries.size() > kSectionLimit) {
        RaiseUnlessQuiet(kSectionTooLong);
        return false;
    }
    // With two more at the end the list is ended, even where the script forgot it.
    const std::wstring list = (convert ? LineBreaksToNuls(entries) : entries) + L'\0';
    return WritePrivateProfileSectionW(section.c_str(), list.c_str(), file_.c_str()) != FALSE;
}

bool Profile::RequireFile() const
{
    if (file_.empty()) RaiseUnlessQuiet(kNoProfile);
    return !file_.empty();
}

} // namespace quill
