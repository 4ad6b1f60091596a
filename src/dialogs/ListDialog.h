// What the classes with a list share: what was chosen, keys and the filter.
#pragma once

#include "dialogs/Choices.h"
#include "dialogs/Dialog.h"
#include "services/Lists.h"

namespace quill {

// A rule for a property that is an array or Empty: keeps a copy of any array that languages have,
// as a zero-based one of Variants. Null is taken for Empty, anything else is ignored.
struct ArrayOrEmpty {
    static Variant Apply(Variant& old, Variant value)
    {
        if (V_VT(&value) == VT_EMPTY || V_VT(&value) == VT_NULL) return {};
        auto elements = ElementsOfAny(value, kMostElements);
        return elements ? MakeList(*std::move(elements)) : std::move(old);
    }
};

// Adds Keys, Filter, and what was chosen: Indexes, SelectedItems, SelectedKeys.
template <class Base>
class WithChoices : public Base {
public:
    STORED_VARIANT(Keys, keys_, ArrayOrEmpty)
    STORED_PROPERTY(VARIANT_BOOL, Filter, filter_)
    COMPUTED_PROPERTY(VARIANT, Indexes)
    COMPUTED_PROPERTY(VARIANT, SelectedItems)
    COMPUTED_PROPERTY(VARIANT, SelectedKeys)

protected:
    // Nothing is chosen until the call has an answer.
    class Showing : public Base::Showing {
    public:
        explicit Showing(WithChoices& dialog) noexcept : Base::Showing(dialog)
        {
            dialog.chosen_ = {};
        }
    };

    // Shows a form by `show`, which returns whether the user has accepted, and keeps what was
    // chosen.
    template <class Show>
    bool Ask(Choices& choices, Show&& show)
    {
        const Variant keys = Variant::Dereferenced(keys_);
        const bool accepted = show();
        if (!accepted) choices.ChooseNone();
        chosen_ = choices.Results(keys);
        return accepted;
    }

    bool filter_ = false;

private:
    Variant Indexes() const { return CopyOf(chosen_.indexes); }
    Variant SelectedItems() const { return CopyOf(chosen_.items); }
    Variant SelectedKeys() const { return CopyOf(chosen_.keys); }

    static Variant CopyOf(const std::vector<Variant>& values)
    {
        std::vector<Variant> copies;
        copies.reserve(values.size());
        for (const Variant& value : values)
            copies.push_back(Variant::Dereferenced(value));
        return MakeList(std::move(copies));
    }

    Variant keys_;
    ChosenLines chosen_;
};

} // namespace quill
