// Who may call the server.
#pragma once

#include <string>

#include "core/Platform.h"

namespace quill {

// The rights to a server of this process: its own user, the system and administrators may call, all
// of them from this computer only; nobody of a lower integrity level may. Throws AutomationError
// if the platform does not report the user.
class AccessRights {
public:
    AccessRights();
    AccessRights(const AccessRights&) = delete;
    AccessRights& operator=(const AccessRights&) = delete;

    // In absolute format, good as long as this object.
    PSECURITY_DESCRIPTOR Descriptor() noexcept { return &absolute_; }

private:
    const Owned<PSECURITY_DESCRIPTOR, LocalFree> rights_;
    SECURITY_DESCRIPTOR absolute_{}; // points into the other one
};

} // namespace quill
