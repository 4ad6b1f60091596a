// The creatable classes.
#pragma once

#include "core/Platform.h"

namespace quill {

// Where the objects of a class live. Services share the main thread; a class whose calls wait for
// the user, or for anything else, gets an apartment from the pool.
enum class Home { Main, Pool };

struct CatalogueRow {
    const CLSID& id;
    const wchar_t* name; // registered as Quill.<name>
    Home home;
    IDispatch* (*create)(); // a new object with no reference yet; throws
};

// Each class defines this for itself, beside its methods, for its published name.
template <class PublishedName>
IDispatch* Create();

struct Catalogue {
    const CatalogueRow* begin() const noexcept;
    const CatalogueRow* end() const noexcept;
};
inline constexpr Catalogue kCatalogue;

// Makes an object of the class on the calling thread and asks it for the interface.
HRESULT CreateHere(const CatalogueRow& row, REFIID id, void** object) noexcept;

} // namespace quill
