// The same numbers for the same seed, with every compiler.
#pragma once

#include <cstdint>
#include <iterator>

namespace quill::fuzz {

// A number that has nothing to do with those of its neighbours.
constexpr std::uint64_t Mixed(std::uint64_t number)
{
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EB;
    return number ^ (number >> 31);
}

class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint32_t Next()
    {
        return static_cast<std::uint32_t>(Mixed(state_ += 0x9E3779B97F4A7C15) >> 32);
    }
    std::uint32_t Below(std::uint32_t limit) { return Next() % limit; }
    bool Percent(std::uint32_t chance) { return Below(100) < chance; }

    template <class List>
    const auto& Pick(const List& list)
    {
        return std::data(list)[Below(static_cast<std::uint32_t>(std::size(list)))];
    }

private:
    std::uint64_t state_;
};

} // namespace quill::fuzz
