// The single-threaded apartments that objects live in. Waits on one thread nest: the last to begin
// must end first. In separate apartments, each wait ends when its own user answers.
#pragma once

#include <array>
#include <memory>
#include <mutex>

#include "core/Catalogue.h"

namespace quill {

class ApartmentPool {
public:
    // Apartments for objects that wait; one more is shared by those that never do.
    static constexpr size_t kLimit = 32;

    ApartmentPool();
    ~ApartmentPool(); // ends the threads
    ApartmentPool(const ApartmentPool&) = delete;
    ApartmentPool& operator=(const ApartmentPool&) = delete;

    // Makes an object where its class belongs: in the shared apartment, or in one
    // without objects, or in a new one while there are fewer than kLimit, or in the one with the
    // fewest. Returns its proxy for the calling thread. Any thread may call; calls that come in
    // meanwhile are served. Fails with out of memory if there is no thread for it, and once the
    // pool is closed.
    HRESULT Create(const CatalogueRow& row, REFIID id, void** object) noexcept;

    // Ends the threads and with them all waits, as if cancelled, and the remaining objects.
    // Creations fail from now on.
    void Close() noexcept;

private:
    struct Apartment;
    struct Request;

    std::unique_ptr<Apartment>& Choose(Placement placement);
    Apartment& Reserve(Placement placement);
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) noexcept;

    std::mutex mutex_;                                              // protects the rest
    std::array<std::unique_ptr<Apartment>, 1 + kLimit> apartments_; // the shared one first
    bool closed_ = false;
};

} // namespace quill
