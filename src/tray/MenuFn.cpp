#include "tray/MenuFn.h"

#include "core/Apartment.h"
#include "gui/windowfn.h"

namespace quill {

int ChooseFromMenu(HWND owner, const std::vector<std::wstring>& texts, POINT screen)
{
    const Owned<HMENU, DestroyMenu> menu(CreatePopupMenu());
    if (!menu) return 0;
    UINT_PTR items = 0;
    for (const std::wstring& text : texts) {
        if (text == L"-")
            AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
        else
            AppendMenuW(menu.get(), MF_STRING, ++items, text.c_str());
    }
    // A menu closes by a click elsewhere only while its owner is the foreground window; the empty
    // messages make the switch to and from it take place at once.
    PostMessageW(owner, WM_NULL, 0, 0);
    Seam<Foreground>().set(owner);
    const int chosen = TrackPopupMenu(menu.get(), TPM_RETURNCMD | TPM_NONOTIFY, screen.x, screen.y,
                                      0, owner, nullptr);
    PostMessageW(owner, WM_NULL, 0, 0);
    EndMenu();
    return chosen;
}

} // namespace quill
