#include "dialogs/List.h"

#include "core/Catalogue.h"
#include "dialogs/frmListBox.h"

namespace quill {

CREATABLE(List)

std::wstring List::Selection(const std::wstring& items, LONG index, const std::wstring& title)
{
    Showing showing(*this);
    if (items.empty()) return {};
    return frmListBox(showing.Request()).LBox(items, multiSel_, index, title);
}

} // namespace quill
