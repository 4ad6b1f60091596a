// What tables know besides the classes.
#pragma once

#include <deque>

#include "support/Listener.h"
#include "support/Members.h"
#include "support/Remote.h"
#include "support/TemporaryFolder.h"

namespace quill::test {

class Host final : public Members {
public:
    using Script = std::function<void(const std::wstring& statement)>;

    explicit Host(Script script);

    const TemporaryFolder folder;

private:
    ComPtr<Listener> listener_;
    ComPtr<Listener> reaction_; // the last one
    std::deque<Client> clients_;
    Event server_;
};

} // namespace quill::test
