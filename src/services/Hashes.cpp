#include "services/Hashes.h"

#include <algorithm>
#include <iterator>

#include <wincrypt.h>

#include "core/Paths.h"
#include "services/Bytes.h"

namespace quill {

namespace {

constexpr DWORD kBlock = 0x10000; // bytes of a file that are read at a time

// The identifier of an algorithm; 0 for an unknown one.
ALG_ID AlgorithmOf(std::wstring name)
{
    static constexpr struct {
        const wchar_t* name;
        ALG_ID id;
    } kAlgorithms[] = {{L"MD5", CALG_MD5}, {L"SHA1", CALG_SHA1}, {L"SHA256", CALG_SHA_256}};
    std::erase(name, L'-');
    const auto length = static_cast<int>(name.size());
    for (const auto& algorithm : kAlgorithms)
        if (CompareStringOrdinal(name.data(), length, algorithm.name, -1, TRUE) == CSTR_EQUAL)
            return algorithm.id;
    return 0;
}

// A hash that is being made. Every step after one that failed fails too.
class Hasher {
public:
    explicit Hasher(const std::wstring& algorithm)
    {
        const ALG_ID id = AlgorithmOf(algorithm);
        usable_ = id != 0 &&
                  CryptAcquireContextW(&provider_, nullptr, nullptr, PROV_RSA_AES,
                                       CRYPT_VERIFYCONTEXT | CRYPT_SILENT) &&
                  CryptCreateHash(provider_, id, 0, 0, &hash_);
    }
    ~Hasher()
    {
        if (hash_) CryptDestroyHash(hash_);
        if (provider_) CryptReleaseContext(provider_, 0);
    }
    Hasher(const Hasher&) = delete;
    Hasher& operator=(const Hasher&) = delete;

    bool Add(const std::uint8_t* bytes, DWORD count)
    {
        usable_ = usable_ && (count == 0 || CryptHashData(hash_, bytes, count, 0));
        return usable_;
    }

    std::wstring Digits()
    {
        Bytes value(64);
        auto size = static_cast<DWORD>(value.size());
        if (!usable_ || !CryptGetHashParam(hash_, HP_HASHVAL, value.data(), &size, 0)) return {};
        value.resize(size);
        return ToHex(value);
    }

private:
    HCRYPTPROV provider_ = 0;
    HCRYPTHASH hash_ = 0;
    bool usable_ = false;
};

} // namespace

std::wstring Hash(const VARIANT& data, const std::wstring& algorithm)
{
    const auto bytes = BytesIn(data);
    Hasher hasher(algorithm);
    if (!bytes || !hasher.Add(bytes->data(), static_cast<DWORD>(bytes->size()))) return {};
    return hasher.Digits();
}

std::wstring HashFile(const std::wstring& path, const std::wstring& algorithm)
{
    Hasher hasher(algorithm);
    const FileHandle file =
        OpenDiskFile(path, GENERIC_READ, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file) return {};
    Bytes block(kBlock);
    DWORD count = 0;
    do {
        if (!ReadFile(file.get(), block.data(), kBlock, &count, nullptr) ||
            !hasher.Add(block.data(), count))
            return {};
    } while (count > 0);
    return hasher.Digits();
}

} // namespace quill
