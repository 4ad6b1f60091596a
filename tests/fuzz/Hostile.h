// What a call is given: values of every type, at and beyond the limits of what they stand for.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <span>
#include <vector>

#include "core/Variant.h"
#include "fuzz/Random.h"

namespace quill::fuzz {

// The arguments of one call, with all that they refer to.
class Arguments {
public:
    // `objects` may be passed, too; `callBack` is what an object of ours does when it is asked for
    // its value. `remote`: the call goes to another process.
    Arguments(Random& random, std::span<const ComPtr<IDispatch>> objects,
              const std::function<void()>& callBack, bool remote)
        : random_(random), objects_(objects), callBack_(callBack), remote_(remote)
    {
    }

    // One more argument, behind the others, for a parameter of this type: what the parameter takes
    // when `exact`, else anything.
    void Add(VARTYPE type, bool exact);
    void Add(Variant value) { values_.push_back(std::move(value)); }

    // A text that a path of a file may be given as.
    Variant PathInFolder();

    // As the platform wants them: last to first.
    std::vector<VARIANT> Reversed() const;
    std::vector<Variant>& Values() { return values_; }
    std::wstring Describe() const;

private:
    Variant OfType(VARTYPE type); // what a careful script would pass, and its boundaries
    Variant Any(int depth);
    Variant Number(VARTYPE type);
    Variant AnyArray(int depth);
    Variant AnyObject();
    Variant Referring(Variant value, bool typed);
    std::wstring Text();

    Random& random_;
    std::span<const ComPtr<IDispatch>> objects_;
    const std::function<void()>& callBack_;
    const bool remote_;
    std::vector<Variant> values_;
    std::deque<Variant> referred_; // stay where they are
};

// For a failure's message: kind and beginning of a value.
std::wstring Describe(const VARIANT& value, int depth = 0);

// A script's object: its value may be a number, a text, an array, itself, an error, or a call back.
// As a sink it answers every event so.
ComPtr<IDispatch> MakeScriptObject(Random& random, const std::function<void()>& callBack);

// How many of them there are.
long LiveScriptObjects() noexcept;

} // namespace quill::fuzz
