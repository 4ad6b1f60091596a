// The published type library, from the executable's resources.
#pragma once

#include "core/Platform.h"

namespace quill {

// The type library's description of a class, found by its default interface.
struct PublishedClass {
    ComPtr<ITypeInfo> interfaceInfo; // executes late-bound calls
    ComPtr<ITypeInfo> classInfo;
    IID eventsId;        // the default source interface; GUID_NULL where the class raises no events
    std::wstring source; // "Quill.<Class>", the source of its errors
};

// The type library; loaded once. Throws AutomationError.
ITypeLib* TypeLibrary();

// Throws AutomationError when no class has this default interface.
const PublishedClass& FindPublishedClass(const IID& interfaceId);

// True when the library has the class of this name ("List", "Quill.List"), or the member of a class
// or of its events ("List.Selection"), in upper or lower case.
bool IsPublished(const std::wstring& name);

} // namespace quill
