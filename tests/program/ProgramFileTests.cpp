// What the loader, the shell and the linker's flags have to say of quill.exe.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "core/Apartment.h"
#include "core/Platform.h"

namespace quill::test {
namespace {

class ProgramFile : public testing::Test {
protected:
    ProgramFile()
    {
        const std::wstring& here = ThisApartment().programPath;
        path_ = here.substr(0, here.find_last_of(L'\\') + 1) + QUILL_PROGRAM;
        std::ifstream file(std::filesystem::path(path_), std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
        module_ = LoadLibraryExW(path_.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    }
    ~ProgramFile() override { FreeLibrary(module_); }

    std::string_view Resource(const wchar_t* type)
    {
        const HRSRC found = FindResourceW(module_, MAKEINTRESOURCEW(1), type);
        if (!found) return {};
        return {static_cast<const char*>(LockResource(LoadResource(module_, found))),
                SizeofResource(module_, found)};
    }

    std::wstring path_;
    std::string bytes_;
    HMODULE module_ = nullptr;
};

TEST_F(ProgramFile, IsHardenedAndStandsAlone)
{
    ASSERT_GT(bytes_.size(), sizeof(IMAGE_DOS_HEADER));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(bytes_.data());
    const auto* headers =
        reinterpret_cast<const IMAGE_NT_HEADERS32*>(bytes_.data() + dos->e_lfanew);
    ASSERT_EQ(headers->Signature, DWORD{IMAGE_NT_SIGNATURE});
    const IMAGE_OPTIONAL_HEADER32& optional = headers->OptionalHeader;
    constexpr WORD kHardened = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE |
                               IMAGE_DLLCHARACTERISTICS_NX_COMPAT |
                               IMAGE_DLLCHARACTERISTICS_TERMINAL_SERVER_AWARE;
    EXPECT_EQ(optional.DllCharacteristics & kHardened, kHardened);
    EXPECT_GT(optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size, 8u);
    EXPECT_FALSE(headers->FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_EQ(headers->FileHeader.Machine, IMAGE_FILE_MACHINE_I386);
    EXPECT_EQ(optional.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);

    // No part of the file is both written to and run.
    const auto* sections = IMAGE_FIRST_SECTION(headers);
    for (WORD index = 0; index < headers->FileHeader.NumberOfSections; ++index) {
        constexpr DWORD kBoth = IMAGE_SCN_MEM_EXECUTE | IMAGE_SCN_MEM_WRITE;
        EXPECT_NE(sections[index].Characteristics & kBoth, kBoth);
    }

    // Libraries that are loaded before the program can look to where they come from: only those
    // that Windows itself maps (its "known DLLs", and the controls that the manifest names). A file
    // beside the program cannot take their place.
    static const std::set<std::string> kKnown{
        "ADVAPI32.dll", "COMCTL32.DLL", "GDI32.dll",   "KERNEL32.dll", "msvcrt.dll",
        "ole32.dll",    "OLEAUT32.dll", "SHELL32.dll", "SHLWAPI.dll",  "USER32.dll"};
    const DWORD imports = optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    ASSERT_NE(imports, 0u);
    const auto* section = IMAGE_FIRST_SECTION(headers);
    const auto* end = section + headers->FileHeader.NumberOfSections;
    while (section != end && imports - section->VirtualAddress >= section->SizeOfRawData)
        ++section;
    ASSERT_NE(section, end);
    const char* base = bytes_.data() + section->PointerToRawData - section->VirtualAddress;
    for (const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
         entry->Name != 0; ++entry)
        EXPECT_TRUE(kKnown.contains(base + entry->Name)) << base + entry->Name;
}

TEST_F(ProgramFile, CarriesItsVersion)
{
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path_.c_str(), nullptr));
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(
        GetFileVersionInfoW(path_.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
    void* found = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", &found, &size));
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    int part[3]{};
    ASSERT_EQ(std::sscanf(QUILL_VERSION, "%d.%d.%d", &part[0], &part[1], &part[2]), 3);
    EXPECT_EQ(fixed->dwFileVersionMS, static_cast<DWORD>(MAKELONG(part[1], part[0])));
    EXPECT_EQ(fixed->dwFileVersionLS, static_cast<DWORD>(MAKELONG(0, part[2])));
    for (const auto& [name, text] : {std::pair{L"FileVersion", L"" QUILL_VERSION ".0"},
                                     {L"ProductName", L"QUILL"},
                                     {L"OriginalFilename", L"quill.exe"}}) {
        const std::wstring key = std::wstring(L"\\StringFileInfo\\040904B0\\") + name;
        ASSERT_TRUE(VerQueryValueW(block.data(), key.c_str(), &found, &size)) << name;
        EXPECT_STREQ(static_cast<const wchar_t*>(found), text);
    }
}

TEST_F(ProgramFile, CarriesManifestIconAndTypeLibrary)
{
    const std::string_view manifest = Resource(RT_MANIFEST);
    for (const char* part :
         {"version=\"" QUILL_VERSION ".0\"", "level=\"asInvoker\"",
          "name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"",
          "{e2011457-1546-43c5-a5fe-008deee3d3f0}", "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}",
          "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}", "{1f676c76-80e1-4239-95bb-83d0f6d0da78}",
          "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"})
        EXPECT_NE(manifest.find(part), std::string_view::npos) << part;
    EXPECT_FALSE(Resource(RT_GROUP_ICON).empty());
    EXPECT_EQ(Resource(L"TYPELIB").substr(0, 4), "MSFT");
}

} // namespace
} // namespace quill::test
