// A folder of its own for a test, removed with all that is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "core/Platform.h"

namespace quill::test {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        wchar_t parent[MAX_PATH];
        wchar_t path[MAX_PATH];
        GetTempPathW(MAX_PATH, parent);
        if (!GetTempFileNameW(parent, L"qt", 0, path) || !DeleteFileW(path) ||
            !CreateDirectoryW(path, nullptr))
            throw std::runtime_error("no temporary folder");
        path_ = path;
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
        const std::filesystem::path path(Path(name));
        std::ofstream file(path, std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
        return path.wstring();
    }

private:
    std::wstring path_;
};

} // namespace quill::test
