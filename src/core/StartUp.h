// Start-up of an apartment thread, and the data that every such thread keeps for itself.
#pragma once

#include <string>

#include "core/Platform.h"

namespace quill {

struct ApartmentData {
    std::wstring programPath; // full path of the executable; empty when the platform did not tell
    int osVersion = 0; // major x 100 + minor: 601 is Windows 7; 0 when the platform did not tell
};

// The calling thread's own data; empty before its StartUp.
ApartmentData& ThisApartment() noexcept;

// Runs once on each apartment thread, before the first object is created there: initialises the
// common controls and fills the thread's data.
void StartUp();

// The version of the running Windows, by RtlGetVersion: never the one that compatibility settings
// make programs believe. False when that fails.
bool ReadOsVersion(OSVERSIONINFOEXW& version) noexcept;

// The version number of the running Windows as ApartmentData has it; 0 when it cannot be read.
int QueryOsVersion() noexcept;

} // namespace quill
