#include "dialogs/List.h"

#include "core/Catalogue.h"
#include "dialogs/frmListBox.h"

namespace quill {

CREATABLE(List)

std::wstring List::Selection(const std::wstring& items, LONG index, const std::wstring& title)
{
    if (items.empty()) return {};
    const DialogSettings settings = settings_; // a call that comes in meanwhile may change them
    return frmListBox(settings).LBox(items, multiSel_, index, title,
                                     [this] { return ClientsGone(); });
}

} // namespace quill
