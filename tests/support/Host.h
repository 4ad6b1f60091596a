// What tables know besides the classes.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "support/CountedDispatch.h"
#include "support/EventListener.h"
#include "support/Reaction.h"
#include "support/ScriptObject.h"
#include "support/Stage.h"
#include "support/TemporaryFolder.h"

namespace quill::test {

// With QUILL_SERVER set, objects come from the registered server.
bool IsServerRun();
ComPtr<IDispatch> MakeObject(const std::wstring& className);

// As a script shows it; what has no text is its type in <>.
std::wstring TextOf(const VARIANT& value);

class Host final : public CountedDispatch {
public:
    using Script = std::function<void(const std::wstring& statement)>;

    explicit Host(Script script) : script_(std::move(script)) {}

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override;
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) noexcept override;

    // The window of a handle, or of a text: the caption or the class of a top-level window, or
    // that, > and a child's class or class:text.
    static HWND WindowOf(const VARIANT& window);

    const TemporaryFolder folder;
    Stage stage;

private:
    using Arguments = std::vector<Variant>; // behind all references
    struct Member {
        const wchar_t* name;
        size_t arguments;
        Variant (*run)(Host& host, const Arguments& given);
    };
    static const Member kMembers[];

    const Script script_;
    std::unique_ptr<EventListener> listener_;
    std::vector<Reaction> reactions_;
};

} // namespace quill::test
