// The creatable classes.
#pragma once

#include "core/Platform.h"

namespace quill {

// Which apartment the objects of a class live in. Those whose calls answer at once share one; those
// that may wait for a user, a disk or the network get their own, up to a limit.
enum class Placement { Shared, Own };

struct CatalogueRow {
    const CLSID& id;
    const wchar_t* name; // registered as Quill.<name>
    Placement placement;
    IDispatch* (*create)(); // a new object with no reference yet; throws
};

// Makes an object of the class with this published name.
template <class PublishedName>
IDispatch* Create();

// Defines Create for a class, in its .cpp.
#define CREATABLE(name)                                                                            \
    template <>                                                                                    \
    IDispatch* Create<::name>()                                                                    \
    {                                                                                              \
        return new name;                                                                           \
    }

struct Catalogue {
    const CatalogueRow* begin() const noexcept;
    const CatalogueRow* end() const noexcept;
};
inline constexpr Catalogue kCatalogue;

// Makes an object of the class on the calling thread and asks it for the interface.
HRESULT CreateHere(const CatalogueRow& row, REFIID id, void** object) noexcept;

} // namespace quill
