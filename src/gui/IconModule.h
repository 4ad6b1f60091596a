// Icons out of modules.
#pragma once

#include "core/Platform.h"

namespace quill {

// A module loaded for its resources only; none of its code runs.
using IconModule = Owned<HMODULE, FreeLibrary>;

// Null when the file is no module or cannot be loaded.
IconModule LoadIconModule(const std::wstring& file) noexcept;

// Which icon of a module, or of the system, is meant.
struct IconName {
    WORD number = 0; // used where there is no name
    std::wstring name;

    // What the platform takes for it: a pointer to the name, or the number in its place. Good as
    // long as this object stays as it is.
    PCWSTR Pointer() const noexcept
    {
        return name.empty() ? MAKEINTRESOURCEW(number) : name.c_str();
    }
};

// Reads "#101" as number 101 and anything else as a name. Raises a run-time error when no number
// follows the "#".
IconName ParseIconName(const std::wstring& text);

} // namespace quill
