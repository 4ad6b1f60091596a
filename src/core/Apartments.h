// The pool of single-threaded apartments for objects whose calls wait. Waits on one thread nest:
// the one that began last must end first. In apartments of their own, each ends when its own user
// answers.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <thread>

#include "core/Catalogue.h"

namespace quill {

class ApartmentPool {
public:
    static constexpr size_t kLimit = 32;

    ApartmentPool();
    ~ApartmentPool(); // ends the threads
    ApartmentPool(const ApartmentPool&) = delete;
    ApartmentPool& operator=(const ApartmentPool&) = delete;

    // Makes an object on an apartment without objects, or on a new one while there are fewer than
    // kLimit, or on the one with the fewest, and returns its proxy for the calling thread. Calls
    // that come in meanwhile are served.
    HRESULT Create(const CatalogueRow& row, REFIID id, void** object) noexcept;

    // Ends the threads and with them all waits, as if cancelled, and the objects that are left.
    // Creations fail from now on.
    void Close() noexcept;

private:
    struct Apartment;
    struct Request;

    Apartment& Choose();
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) noexcept;

    std::array<std::unique_ptr<Apartment>, kLimit> apartments_; // filled from the front
    bool closed_ = false;
};

// Counts an object of the calling thread while it lives; the pool goes by these counts.
class ApartmentLoad {
public:
    ApartmentLoad() noexcept;
    ~ApartmentLoad();
    ApartmentLoad(const ApartmentLoad&) = delete;
    ApartmentLoad& operator=(const ApartmentLoad&) = delete;
};

} // namespace quill
