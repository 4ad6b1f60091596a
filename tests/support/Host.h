// What tables know besides the classes: members of its own, and by their names the functions of the
// system's libraries. To those, arrays are what they hold, and texts the window that they name, or
// else themselves:
//
//     SetWindowPos "Report", 0, 0, 0, 300, 200, 22
//     place = Aux.TypedArray(Array(0, 0, 0, 0), 3) : GetWindowRect "Report>Edit#2", place
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

    STDMETHODIMP GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* ids) noexcept override;
    STDMETHODIMP Invoke(DISPID id, REFIID type, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* error, UINT* wrong) noexcept override;

    const TemporaryFolder folder;

private:
    ComPtr<Listener> listener_;
    ComPtr<Listener> reaction_; // the last one
    std::deque<Client> clients_;
    Event server_;
    std::vector<FARPROC> functions_; // that were asked for
};

} // namespace quill::test
