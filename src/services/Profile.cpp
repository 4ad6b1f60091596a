#include "services/Profile.h"

#include "core/Catalogue.h"
#include "core/quillfn.h"

namespace quill {

namespace {

// Buffer sizes and limits, in UTF-16 units.
constexpr size_t kValueLimit = 8192;
constexpr size_t kSectionLimit = 32768;

constexpr std::wstring_view kLineBreak = L"\r\n";

// The first `count` units of a buffer that the platform filled.
std::wstring Filled(std::wstring buffer, DWORD count)
{
    buffer.resize(count);
    return buffer;
}

std::wstring NulsToLineBreaks(const std::wstring& text)
{
    std::wstring lines;
    lines.reserve(text.size() + text.size() / 8);
    for (wchar_t unit : text) {
        if (unit == L'\0')
            lines += kLineBreak;
        else
            lines += unit;
    }
    return lines;
}

std::wstring LineBreaksToNuls(const std::wstring& text)
{
    std::wstring list;
    list.reserve(text.size() + 1);
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(kLineBreak, begin), text.size());
        list.append(text, begin, end - begin);
        list += L'\0';
        begin = end + kLineBreak.size();
    }
    return list;
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
    std::wstring list = convert ? LineBreaksToNuls(entries) : entries;
    list += L'\0'; // with the terminator the list ends in two, even where the script forgot them
    return WritePrivateProfileSectionW(section.c_str(), list.c_str(), file_.c_str()) != FALSE;
}

bool Profile::HasFile() const
{
    if (file_.empty()) Fail(error::kNoProfile);
    return !file_.empty();
}

void Profile::Fail(const ErrorEntry& entry, const std::wstring& value) const
{
    if (errorLevel_ >= 1) Raise(entry, value);
}

} // namespace quill
