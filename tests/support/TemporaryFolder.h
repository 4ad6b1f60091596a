// A folder of its own for a test, removed with all that is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "core/Platform.h"

namespace quill::test {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        wchar_t path[MAX_PATH];
        GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), L"qt", 0, path);
        std::filesystem::remove(path);
        std::filesystem::create_directory(path_ = path);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::wstring& Path() const { return path_; }
    std::wstring Path(const std::wstring& name) const { return path_ + L'\\' + name; }

    // Writes a file of these bytes and returns its path.
    std::wstring Write(const std::wstring& name, std::string_view bytes) const
    {
        std::ofstream(std::filesystem::path(Path(name)), std::ios::binary) << bytes;
        return Path(name);
    }

private:
    std::wstring path_;
};

} // namespace quill::test
