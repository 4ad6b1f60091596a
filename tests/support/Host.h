// What tables know besides the classes.
#pragma once

#include <memory>

#include "support/EventListener.h"
#include "support/Members.h"
#include "support/TemporaryFolder.h"

namespace quill::test {

class Host final : public Members {
public:
    using Script = std::function<void(const std::wstring& statement)>;

    explicit Host(Script script);

    const TemporaryFolder folder;

private:
    std::unique_ptr<EventListener> listener_;
    std::vector<Reaction> reactions_;
};

} // namespace quill::test
