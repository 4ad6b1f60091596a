#include "gui/IconModule.h"

#include "core/Variant.h"

namespace quill {

IconModule LoadIconModule(const std::wstring& file) noexcept
{
    return IconModule(LoadLibraryExW(file.c_str(), nullptr,
                                     LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

IconName ParseIconName(const std::wstring& text)
{
    if (text.starts_with(L'#')) return {LOWORD(ToLong(text.substr(1))), {}};
    return {0, text};
}

} // namespace quill
