// What a call is given: values of every type, at and beyond the limits of what they stand for.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill::fuzz {

// The same numbers for the same seed, with every compiler.
class Random : public std::mt19937 {
public:
    using std::mt19937::mt19937;

    std::uint32_t Below(std::uint32_t limit)
    {
        return static_cast<std::uint32_t>((*this)()) % limit;
    }
    bool Percent(std::uint32_t chance) { return Below(100) < chance; }
    template <class List>
    const auto& Pick(const List& list)
    {
        return std::data(list)[Below(static_cast<std::uint32_t>(std::size(list)))];
    }
};

// What becomes of objects that were made together: when the platform refuses the call that they are
// for, Wine forgets some, and they are not expected back.
struct Fate {
    std::atomic<long> live{0};
    std::atomic<bool> forgotten{false};

    void Forget();
};

// The arguments of one call, with all that they refer to.
class Arguments {
public:
    // `objects` may be passed, too; `callBack` is what an object of a script does when it is asked
    // for its value.
    Arguments(Random& random, std::span<const ComPtr<IDispatch>> objects,
              const std::function<void()>& callBack)
        : random_(random), objects_(objects), callBack_(callBack)
    {
    }

    // One more, behind the others: what a parameter of this type takes when `exact`, else anything.
    void Add(VARTYPE type, bool exact);
    void Add(std::wstring_view text) { values.emplace_back(text); }

    std::vector<VARIANT> Reversed() const { return {values.rbegin(), values.rend()}; }

    std::vector<Variant> values;
    const std::shared_ptr<Fate> fate = std::make_shared<Fate>();

private:
    Variant OfType(VARTYPE type);
    Variant Any(int depth);
    Variant Number(VARTYPE type);
    Variant AnyArray(int depth);
    Variant AnyObject();
    std::wstring Text();

    Random& random_;
    std::span<const ComPtr<IDispatch>> objects_;
    const std::function<void()>& callBack_;
    std::deque<Variant> referred_; // stay where they are
};

// A script's object: its value may be a number, a text, an array, itself, an error, or a call back.
// As a sink it answers every event so.
ComPtr<IDispatch> MakeScriptObject(Random& random, const std::function<void()>& callBack,
                                   std::shared_ptr<Fate> fate);

// How many of them there are, without forgotten ones.
long LiveScriptObjects() noexcept;

} // namespace quill::fuzz
