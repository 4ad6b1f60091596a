// A thread of the server that runs objects, and its own data.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <typeindex>

#include "core/MessagePump.h"

namespace quill {

// Everything that a thread keeps outside of its objects. The function that runs the thread owns the
// record, and a plain pointer finds it: with this toolchain the storage of a thread can be freed
// before the destructors of its thread_local objects run, so these must have none.
class ApartmentRecord {
public:
    // Enters an apartment of this model (CoInitializeEx), makes this the calling thread's record,
    // initialises the common controls and reads the values below. Throws AutomationError.
    explicit ApartmentRecord(DWORD model = COINIT_APARTMENTTHREADED);
    // Leaves the apartment.
    ~ApartmentRecord();
    ApartmentRecord(const ApartmentRecord&) = delete;
    ApartmentRecord& operator=(const ApartmentRecord&) = delete;

    std::wstring programPath;         // full path of the executable; empty if unavailable
    int osVersion = 0;                // major x 100 + minor: 601 is Windows 7; 0 if unavailable
    std::atomic<int>* load = nullptr; // counts the objects here; null on the main thread
    MessagePreview preview = nullptr; // sees posted messages before they are dispatched

    // The record's own T, made by its default constructor when it is first asked for.
    template <class T>
    T& Part()
    {
        std::shared_ptr<void>& part = parts_[typeid(T)];
        if (!part) part = std::make_shared<T>();
        return *static_cast<T*>(part.get());
    }

private:
    std::map<std::type_index, std::shared_ptr<void>> parts_;
};

// The calling thread's record.
ApartmentRecord& ThisApartment() noexcept;

// A seam: the platform functions that T names, for the calling thread. They are the platform's own
// until a test assigns others.
template <class T>
T& Seam()
{
    return ThisApartment().Part<T>();
}

// The version of the running Windows, by RtlGetVersion: never the one that compatibility settings
// make programs believe. False when that fails.
bool ReadOsVersion(OSVERSIONINFOEXW& version) noexcept;

// The version number of the running Windows as the record has it; 0 when it cannot be read.
int QueryOsVersion() noexcept;

} // namespace quill
