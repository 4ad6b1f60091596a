#include "core/ObjectLife.h"

#include "core/Apartment.h"

namespace quill {

namespace {

// Mutable globals, of which there are few: objects are counted wherever they are made, with a
// server or without.
std::atomic<long> locks{0};
std::atomic<HWND> listener{nullptr};
std::atomic<UINT> unlockedMessage{0};

} // namespace

void LockServerProcess() noexcept
{
    ++locks;
    CoAddRefServerProcess();
}

void UnlockServerProcess() noexcept
{
    CoReleaseServerProcess();
    if (--locks != 0) return;
    if (const HWND window = listener) PostMessageW(window, unlockedMessage, 0, 0);
}

bool IsServerLocked() noexcept
{
    return locks != 0;
}

void NotifyUnlocked(HWND window, UINT message) noexcept
{
    unlockedMessage = message;
    listener = window;
}

ApartmentLoad::ApartmentLoad() noexcept
{
    if (const auto load = ThisApartment().load) ++*load;
}

ApartmentLoad::~ApartmentLoad()
{
    if (const auto load = ThisApartment().load) --*load;
}

} // namespace quill
