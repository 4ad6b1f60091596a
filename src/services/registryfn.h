// The registry as the platform shows it: keys, names, values, and the search below a key.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Platform.h"

namespace quill {

// Longest texts that name anything, in UTF-16 units. Longer ones the platform would cut.
inline constexpr size_t kKeyPathLimit = 32'767;
inline constexpr size_t kValueNameLimit = 16'383;

enum class RegistryItem { Subkey, Value };

struct RegistryValue {
    DWORD type;
    std::vector<BYTE> bytes;
};

// The root of this name, long or short and in any case; null for an unknown name.
HKEY RootKeyOf(std::wstring name);

// Opens a key below another, or the other itself for an empty path. The platform's result code.
LONG OpenKey(HKEY parent, const std::wstring& path, REGSAM access, RegistryKey& key);

// Asks whether a value is there. The platform's result code.
LONG FindValue(HKEY key, const std::wstring& name);

// A value as it is stored; none when it is not there or cannot be read.
std::optional<RegistryValue> ReadValue(HKEY key, const std::wstring& name);

// The name at this index, in the order of the registry. False beyond the last one, and where the
// key cannot be read.
bool NameAt(HKEY key, RegistryItem item, DWORD index, std::wstring& name);

// Looks below a key for names like a pattern, without regard to case.
class RegistrySearch {
public:
    // Keys are opened with this access; those that may not be opened are passed over, and so are
    // the first matches, as many as `skip` says.
    RegistrySearch(const std::wstring& pattern, RegistryItem item, REGSAM access, LONG skip);

    // Depth first, in the order of the registry; the values of a key come before its subkeys. The
    // key itself is the first level. A value that is found gets its key's path, a backslash and its
    // name, which is empty for the default value.
    std::optional<std::wstring> Below(HKEY key, const std::wstring& path, LONG levels);

private:
    bool Walk(HKEY key, LONG levels);
    bool IsHit(const std::wstring& name);

    const std::wstring pattern_; // in upper case
    const RegistryItem item_;
    const REGSAM access_;
    LONG skip_;
    std::wstring path_; // of the key that is being searched; at the end, of the match
};

} // namespace quill
