// Measures what quill.exe does with much data, each against the least that the same work costs.
//
//     data_bench            all of these
//     data_bench file       a file of 64 MB, written and read in blocks, against the bare server
//                           moving the same blocks without a file
//     data_bench registry   a search through the machine's software keys, against a walk through
//                           them in this process
//     data_bench sort       100,000 strings, sorted by the routine behind Aux and by the library
//
// Both take turns in every round, and medians are compared. The exit code is 1 when something could
// not be measured, which includes a wrong result.
#include <cstdint>
#include <cstring>
#include <map>
#include <random>

#include "measure.h"
#include "services/Lists.h"

namespace {

using namespace bench;

constexpr LONG kBlock = 1 << 20; // bytes
constexpr int kBlocks = 64;
constexpr double kFileAim = 1.3;
constexpr double kSearchAim = 1.5;
constexpr double kSortAim = 1.5;

bool IsTrue(const VARIANT& value)
{
    return V_VT(&value) == VT_BOOL && V_BOOL(&value) == VARIANT_TRUE;
}

class TemporaryFile {
public:
    TemporaryFile()
    {
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        Require(GetTempFileNameW(folder, L"qlb", 0, path_) != 0, "a file could not be made");
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { DeleteFileW(path_); }

    const wchar_t* Path() const { return path_; }

private:
    wchar_t path_[MAX_PATH];
};

// Blocks that differ, so that one in another's place is seen.
class Blocks {
public:
    Blocks() : random_(kBlock)
    {
        std::mt19937 generator(1);
        for (BYTE& byte : random_)
            byte = static_cast<BYTE>(generator());
    }
    void Make(Value& block, int number) const
    {
        V_ARRAY(&block) = SafeArrayCreateVector(VT_UI1, 0, kBlock);
        Require(V_ARRAY(&block) != nullptr, "out of memory");
        V_VT(&block) = VT_ARRAY | VT_UI1;
        auto* bytes = static_cast<BYTE*>(V_ARRAY(&block)->pvData);
        std::memcpy(bytes, random_.data(), kBlock);
        bytes[0] = static_cast<BYTE>(number);
    }
    bool IsBlock(const Value& block, int number) const
    {
        if (!HasSize(block)) return false;
        const auto* bytes = static_cast<const BYTE*>(V_ARRAY(&block)->pvData);
        return bytes[0] == number && std::memcmp(bytes + 1, random_.data() + 1, kBlock - 1) == 0;
    }
    static bool HasSize(const Value& block)
    {
        return V_VT(&block) == (VT_ARRAY | VT_UI1) &&
               V_ARRAY(&block)->rgsabound[0].cElements == kBlock;
    }

private:
    std::vector<BYTE> random_;
};

// Each block is sent in a variable of its own, and each is read into an empty one: what a variable
// holds before a call travels too.
void MeasureFile()
{
    const ComPtr<IClassFactory> held[]{Hold(Object::ClassOf(L"Quill.File")),
                                       Hold(Object::ClassOf(L"QuillBench.Bare"))};
    const TemporaryFile temporary;
    const Object opener(L"Quill.File");
    Value path[]{Value(std::wstring(temporary.Path()))};
    Value opened;
    opener.Call(opener.Find(L"OpenBinary"), path, opened);
    const Object file(opened);
    const Object bare(L"QuillBench.Bare");
    const Blocks blocks;

    // Milliseconds of one call with `block` as its first argument and the size as its second.
    const auto timed = [](const Object& object, DISPID id, Value& block) {
        Value arguments[]{Value(kBlock), Value(&block)};
        Value result;
        const double time = Timed([&] { object.Call(id, arguments, result); });
        Require(IsTrue(result), "a block could not be moved");
        return time;
    };

    const DISPID write = file.Find(L"BWrite");
    const DISPID take = bare.Find(L"Take");
    int written = 0;
    Compare(
        "write of 64 MB, a block of 1 MB", kBlocks,
        [&] {
            Value block;
            blocks.Make(block, written++);
            return timed(file, write, block);
        },
        [&] {
            Value block;
            blocks.Make(block, 0);
            return timed(bare, take, block);
        },
        kFileAim);

    file.Put(file.Find(L"Location"), Value(0L));
    const DISPID read = file.Find(L"BRead");
    const DISPID give = bare.Find(L"Give");
    int got = 0;
    Compare(
        "read of 64 MB, a block of 1 MB", kBlocks,
        [&] {
            Value block;
            const double time = timed(file, read, block);
            Require(blocks.IsBlock(block, got++), "a block is not what was written");
            return time;
        },
        [&] {
            Value block;
            const double time = timed(bare, give, block);
            Require(Blocks::HasSize(block), "a block is not what was asked for");
            return time;
        },
        kFileAim);
    Value none;
    file.Call(file.Find(L"BClose"), {}, none); // before the file can be deleted
}

// No key is called this, so all are looked at.
constexpr wchar_t kSought[] = L"no key is called this";

// Shows each key below to `visit`, with its level.
template <class Visit>
void Walk(HKEY key, int level, const Visit& visit)
{
    wchar_t name[256];
    DWORD length = 256;
    for (DWORD index = 0; RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr,
                                        nullptr) == ERROR_SUCCESS;
         ++index, length = 256) {
        visit(name, static_cast<int>(length), level);
        HKEY subkey = nullptr;
        if (RegOpenKeyExW(key, name, 0, KEY_READ, &subkey) != ERROR_SUCCESS) continue;
        Walk(subkey, level + 1, visit);
        RegCloseKey(subkey);
    }
}

template <class Visit>
void WalkSoftware(const Visit& visit)
{
    HKEY key = nullptr;
    Require(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, KEY_READ, &key) == ERROR_SUCCESS,
            "the registry could not be read");
    Walk(key, 1, visit);
    RegCloseKey(key);
}

// Of the names that only one key has, that of the key on the lowest level.
std::wstring DeepestName()
{
    std::map<std::wstring, std::vector<int>> levels;
    WalkSoftware([&](const wchar_t* name, int, int level) { levels[name].push_back(level); });
    int deepest = 0;
    std::wstring found;
    for (const auto& [name, on] : levels) {
        if (on.size() > 1 || on[0] <= deepest) continue;
        deepest = on[0];
        found = name;
    }
    return found;
}

void MeasureRegistry()
{
    const ComPtr<IClassFactory> held = Hold(Object::ClassOf(L"Quill.Registry"));
    const Object registry(L"Quill.Registry");
    registry.Put(registry.Find(L"KeyLevels"), Value(64L));
    const DISPID search = registry.Find(L"Search");
    const auto finds = [&](const std::wstring& name) {
        Value arguments[]{Value(std::wstring(L"HKLM\\Software")), Value(name)};
        Value found;
        registry.Call(search, arguments, found);
        return V_VT(&found) == VT_BSTR && SysStringLen(V_BSTR(&found)) > 0;
    };

    Require(finds(DeepestName()), "a search does not go as deep as a walk");

    int keys = 0;
    Compare(
        "search through HKLM\\Software", 15,
        [&] {
            bool isThere = true;
            const double time = Timed([&] { isThere = finds(kSought); });
            Require(!isThere, "a search found what is not there");
            return time;
        },
        [&] {
            keys = 0;
            bool isThere = false;
            const double time = Timed([&] {
                WalkSoftware([&](const wchar_t* name, int length, int) {
                    ++keys;
                    if (CompareStringOrdinal(name, length, kSought, -1, TRUE) == CSTR_EQUAL)
                        isThere = true;
                });
            });
            Require(!isThere, "a walk found what is not there");
            return time;
        },
        kSearchAim);
    std::printf("    (%d keys)\n", keys);
}

bool Before(const std::wstring& left, const std::wstring& right)
{
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, 0, left.data(), static_cast<int>(left.size()),
                           right.data(), static_cast<int>(right.size()), nullptr, nullptr,
                           0) == CSTR_LESS_THAN;
}

void MeasureSort()
{
    constexpr int kStrings = 100'000;
    std::mt19937 generator(1);
    std::vector<std::wstring> strings(kStrings);
    for (std::wstring& string : strings) {
        string.resize(10 + generator() % 21);
        for (wchar_t& letter : string)
            letter = static_cast<wchar_t>((generator() % 4 ? L'a' : L'A') + generator() % 26);
    }
    const quill::Variant items = quill::MakeStringArray(strings, true);

    std::vector<std::wstring> expected;
    quill::Variant sorted;
    Compare(
        "sort of 100,000 strings", 7,
        [&] { return Timed([&] { sorted = quill::Sort(items, false, false); }); },
        [&] {
            expected = strings; // before the clock starts
            return Timed([&] { std::stable_sort(expected.begin(), expected.end(), Before); });
        },
        kSortAim);

    const auto elements = quill::DataOf<const VARIANT>(*V_ARRAY(&sorted));
    Require(std::equal(elements.begin(), elements.end(), expected.begin(), expected.end(),
                       [](const VARIANT& element, const std::wstring& string) {
                           return std::wstring(V_BSTR(&element), SysStringLen(V_BSTR(&element))) ==
                                  string;
                       }),
            "the strings came out in another order");
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    const std::wstring mode = count > 1 ? arguments[1] : L"";
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    int exitCode = 0;
    try {
        std::printf("%-46s %9s %9s %-3s %6s   aim %.1f, %.1f, %.1f\n", "", "ours", "least", "",
                    "ratio", kFileAim, kSearchAim, kSortAim);
        if (mode.empty() || mode == L"file") MeasureFile();
        if (mode.empty() || mode == L"registry") MeasureRegistry();
        if (mode.empty() || mode == L"sort") MeasureSort();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "data_bench: %s\n", failure.what());
        exitCode = 1;
    }
    CoUninitialize();
    return exitCode;
}
