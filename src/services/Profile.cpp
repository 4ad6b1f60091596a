#include "services/Profile.h"

#include "core/Catalogue.h"
#include "core/Text.h"

namespace quill {

namespace {

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

template <>
IDispatch* Create<::Profile>()
{
    return new Profile;
}

void Profile::SetFile(const std::wstring& path)
{
    std::wstring tested = path;
    if (FileExists(tested, false))
        file_ = path;
    else
        Fail(error::kProfileNotFound, path);
}

std::wstring Profile::ReadValue(const std::wstring& section, const std::wstring& key) const
{
    if (!HasFile()) return {};
    std::wstring buffer(kValueLimit, L'\0');
    const DWORD count = GetPrivateProfileStringW(section.c_str(), key.c_str(), L"", buffer.data(),
                                                 kValueLimit, file_.c_str());
    return Filled(std::move(buffer), count);
}

std::wstring Profile::ReadSection(const std::wstring& section, bool convert) const
{
    if (!HasFile()) return {};
    std::wstring buffer(kSectionLimit, L'\0');
    const DWORD count =
        GetPrivateProfileSectionW(section.c_str(), buffer.data(), kSectionLimit, file_.c_str());
    const std::wstring entries = Filled(std::move(buffer), count);
    return convert ? NulsToLineBreaks(entries) : entries;
}

std::wstring Profile::ReadSectionNames(bool convert) const
{
    if (!HasFile()) return {};
    std::wstring buffer(kSectionLimit, L'\0');
    const DWORD count = GetPrivateProfileSectionNamesW(buffer.data(), kSectionLimit, file_.c_str());
    const std::wstring names = Filled(std::move(buffer), count);
    return convert ? NulsToLineBreaks(names) : names;
}

bool Profile::WriteValue(const std::wstring& section, const std::wstring& key,
                         const std::wstring& entry)
{
    if (!HasFile()) return false;
    if (entry.size() > kValueLimit) {
        Fail(error::kValueTooLong);
        return false;
    }
    // No key: the whole section goes. No entry: the key goes.
    const wchar_t* keyText = key.empty() ? nullptr : key.c_str();
    const wchar_t* entryText = key.empty() || entry.empty() ? nullptr : entry.c_str();
    return WritePrivateProfileStringW(section.c_str(), keyText, entryText, file_.c_str()) != FALSE;
}

bool Profile::WriteSection(const std::wstring& section, const std::wstring& entries, bool convert)
{
    if (!HasFile()) return false;
    if (entries.size() > kSectionLimit) {
        Fail(error::kSectionTooLong);
        return false;
    }
    // With two more at the end the list is ended, even where the script forgot it.
    const std::wstring list = (convert ? LineBreaksToNuls(entries) : entries) + L'\0';
    return WritePrivateProfileSectionW(section.c_str(), list.c_str(), file_.c_str()) != FALSE;
}

bool Profile::HasFile() const
{
    if (file_.empty()) Fail(error::kNoProfile);
    return !file_.empty();
}

} // namespace quill
