// Registration of the server: classes, programmatic identifiers, type library, interfaces and, for
// all users, the source of our events in the event log.
#pragma once

#include <string>
#include <vector>

namespace quill {

enum class RegistrationScope { AllUsers, CurrentUser };

// For all users when the process has administrator rights, else for the current one.
RegistrationScope DefaultRegistrationScope() noexcept;

// Writes the registration of the executable at `program` (a full path), readable by 32-bit and
// 64-bit clients. Registering again renews it. Throws AutomationError.
void RegisterServer(RegistrationScope scope, const std::wstring& program);

// Removes what was written for the executable at `program`, for all users and for the current one,
// and returns for whom there was something; what points at another executable stays. Throws
// AutomationError.
std::vector<RegistrationScope> UnregisterServer(const std::wstring& program);

// The executable that clients of the current user are served by; empty when none is registered.
std::wstring RegisteredProgram();

} // namespace quill
