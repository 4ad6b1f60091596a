#include "dialogs/ChoiceView.h"

#include <algorithm>

#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr UINT kCursor = LVIS_FOCUSED | LVIS_SELECTED;

// Replaces a tab, which has no stops here; its first character replaces other control characters.
constexpr std::wstring_view kShownTab = L"    ";

// The list view draws no more of a cell.
constexpr size_t kShownUnits = 259;

// More rows do not make a window higher.
constexpr size_t kMeasuredRows = 500;

// Ctrl+A, as a character.
constexpr wchar_t kSelectAll = 1;

// Beside the text of a cell and of a heading, as the list view itself leaves it; in pixels at 96
// per inch.
constexpr int kCellMargin = 15;
constexpr int kHeadingMargin = 42;

// Commands of the context menu.
enum Command : UINT { kAll = 1, kNone, kFirstSort };

// Copies what can be shown of the text: up to a NUL, and as much as there is room for. `blanks`:
// control characters become spaces.
void CopyShown(std::wstring_view text, bool blanks, wchar_t* room, size_t units) noexcept
{
    if (units == 0) return;
    const wchar_t* const end = room + units - 1;
    for (wchar_t unit : text.substr(0, text.find(L'\0'))) {
        std::wstring_view shown(&unit, 1);
        if (blanks && unit < L' ')
            shown = kShownTab.substr(0, unit == L'\t' ? kShownTab.size() : 1);
        if (static_cast<size_t>(end - room) < shown.size()) break;
        room = std::copy(shown.begin(), shown.end(), room);
    }
    *room = L'\0';
}

// An ampersand in a menu stands for itself when there are two.
std::wstring MenuText(const std::wstring& text)
{
    std::wstring doubled;
    for (wchar_t unit : text)
        doubled.append(unit == L'&' ? 2 : 1, unit);
    return doubled;
}

} // namespace

ChoiceView::ChoiceView(Form& form, const TwipRect& place, Kind kind, Handlers handlers)
    : Control(form, place, CommonClass(ICC_LISTVIEW_CLASSES, WC_LISTVIEWW), L"",
              WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_NOCOLUMNHEADER | LVS_SHOWSELALWAYS |
                  (kind == Kind::Multiple ? 0 : LVS_SINGLESEL),
              WS_EX_CLIENTEDGE),
      kind_(kind), handlers_(std::move(handlers))
{
    const DWORD style =
        LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | (kind == Kind::Checks ? LVS_EX_CHECKBOXES : 0);
    Send(LVM_SETEXTENDEDLISTVIEWSTYLE, style, static_cast<LPARAM>(style));
    // The boxes are drawn as OnNotify says.
    if (kind == Kind::Checks) Send(LVM_SETCALLBACKMASK, LVIS_STATEIMAGEMASK);
}

void ChoiceView::Fill(Choices& choices, const std::vector<std::wstring>& headings)
{
    choices_ = &choices;
    headings_ = headings;
    choices.SetColumns(headings.size());
    if (HasHeadings())
        SetWindowLongW(Window(), GWL_STYLE,
                       GetWindowLongW(Window(), GWL_STYLE) & ~LVS_NOCOLUMNHEADER);
    std::vector<std::wstring_view> cells(choices.Count());
    for (size_t column = 0; column < std::max<size_t>(1, headings.size()); ++column) {
        std::wstring heading = HasHeadings() ? headings[column] : std::wstring();
        LVCOLUMNW description{};
        description.mask = LVCF_TEXT;
        description.pszText = heading.data();
        Send(LVM_INSERTCOLUMNW, column, reinterpret_cast<LPARAM>(&description));
        for (size_t line = 0; line < cells.size(); ++line)
            cells[line] = choices.Cell(line, column);
        std::vector<std::wstring>& longest = longest_.emplace_back();
        for (std::wstring_view cell : LongestOf(cells))
            longest.emplace_back(cell.substr(0, kShownUnits));
    }
    Send(LVM_SETITEMCOUNT, choices.Rows()); // WantedSize measures nothing in an empty list
    FitColumns();
}

int ChoiceView::NextRow(int after, UINT flags) const noexcept
{
    return static_cast<int>(
        Send(LVM_GETNEXTITEM, static_cast<WPARAM>(after), static_cast<LPARAM>(flags)));
}

// -1 stands for all rows.
void ChoiceView::SetState(int row, UINT state, UINT mask) noexcept
{
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    Send(LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

void ChoiceView::Collect()
{
    if (kind_ == Kind::Checks) return; // known already
    int row = AnySelected() ? NextRow(-1, LVNI_SELECTED) : -1;
    if (kind_ == Kind::Single) {
        // A chosen line that the filter hides stays chosen until there is another.
        if (row < 0 && !choices_->FirstChosenRow()) return;
        choices_->ChooseNone();
        if (row >= 0) choices_->Choose(choices_->LineOf(static_cast<size_t>(row)));
        return;
    }
    for (size_t each = 0; each < choices_->Rows(); ++each)
        choices_->Choose(choices_->LineOf(each), false);
    for (; row >= 0; row = NextRow(row, LVNI_SELECTED))
        choices_->Choose(choices_->LineOf(static_cast<size_t>(row)));
}

void ChoiceView::ShowRows()
{
    const size_t rows = choices_->Rows();
    Send(WM_SETREDRAW, FALSE);
    // Without rows it has no selection. To take that off all rows at once may take a call for each.
    Send(LVM_SETITEMCOUNT, 0);
    if (AnySelected()) SetState(-1, 0, kCursor);
    Send(LVM_SETITEMCOUNT, rows);
    const auto chosen = choices_->FirstChosenRow();
    const auto current = static_cast<int>(kind_ == Kind::Checks ? 0 : chosen.value_or(0));
    if (kind_ == Kind::Single) {
        if (chosen) SetState(current, kCursor, kCursor);
    } else if (kind_ == Kind::Multiple) {
        for (size_t row = chosen.value_or(rows); row < rows; ++row)
            if (choices_->IsChosen(choices_->LineOf(row)))
                SetState(static_cast<int>(row), LVIS_SELECTED, LVIS_SELECTED);
    } else {
        SetState(current, kCursor, kCursor);
    }
    SetState(current, LVIS_FOCUSED, LVIS_FOCUSED);
    Send(WM_SETREDRAW, TRUE);
    Send(LVM_ENSUREVISIBLE, static_cast<WPARAM>(current), FALSE);
    if (!HasHeadings()) FitColumns(); // a scroll bar may have come or gone
    InvalidateRect(Window(), nullptr, TRUE);
}

void ChoiceView::Enter()
{
    Focus();
    if (choices_->Rows() == 0) return;
    Collect();
    const auto row = static_cast<int>(choices_->FirstChosenRow().value_or(0));
    if (kind_ == Kind::Checks) return; // the keyboard stays where it was in the list
    SetState(row, kCursor, kCursor);
    Send(LVM_SETSELECTIONMARK, 0, row);
    Send(LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

TwipSize ChoiceView::WantedSize() const
{
    const size_t rows = std::min(std::max<size_t>(choices_->Rows(), 1), kMeasuredRows);
    const auto room = static_cast<DWORD>(Send(LVM_APPROXIMATEVIEWRECT, rows, MAKELPARAM(-1, -1)));
    int width = GetSystemMetrics(SM_CXVSCROLL) + 2 * GetSystemMetrics(SM_CXEDGE);
    for (size_t column = 0; column < longest_.size(); ++column)
        width += static_cast<int>(Send(LVM_GETCOLUMNWIDTH, column));
    RECT header{};
    GetClientRect(reinterpret_cast<HWND>(Send(LVM_GETHEADER)), &header);
    return {Owner().ToTwips(width),
            Owner().ToTwips(HIWORD(room) + header.bottom + 2 * GetSystemMetrics(SM_CYEDGE))};
}

void ChoiceView::ChooseAll(bool chosen)
{
    if (kind_ == Kind::Checks) {
        for (size_t row = 0; row < choices_->Rows(); ++row)
            choices_->Choose(choices_->LineOf(row), chosen);
        InvalidateRect(Window(), nullptr, FALSE);
    } else {
        SetState(-1, chosen ? LVIS_SELECTED : 0, LVIS_SELECTED);
    }
}

void ChoiceView::ToggleAll()
{
    if (kind_ == Kind::Single) return;
    Collect();
    bool all = true;
    for (size_t row = 0; all && row < choices_->Rows(); ++row)
        all = choices_->IsChosen(choices_->LineOf(row));
    ChooseAll(!all);
}

void ChoiceView::ShowMenu(POINT at)
{
    const Owned<HMENU, DestroyMenu> menu(CreatePopupMenu());
    if (kind_ != Kind::Single) {
        const bool checks = kind_ == Kind::Checks;
        AppendMenuW(menu.get(), MF_STRING, kAll,
                    checks ? L"Check &all\tCtrl+A" : L"Select &all\tCtrl+A");
        AppendMenuW(menu.get(), MF_STRING, kNone, checks ? L"Check &none" : L"Select &none");
    }
    if (HasHeadings() && kind_ != Kind::Single) AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    for (size_t column = 0; column < headings_.size(); ++column)
        AppendMenuW(menu.get(), choices_->SortedBy() == column ? MF_CHECKED : MF_STRING,
                    kFirstSort + column, (L"Sort by " + MenuText(headings_[column])).c_str());
    if (GetMenuItemCount(menu.get()) <= 0) return;
    if (at.x == -1 && at.y == -1) {
        RECT row{LVIR_LABEL, 0, 0, 0};
        Send(LVM_GETITEMRECT, static_cast<WPARAM>(std::max(0, NextRow(-1, LVNI_FOCUSED))),
             reinterpret_cast<LPARAM>(&row));
        at = {row.left, row.bottom};
        ClientToScreen(Window(), &at);
    }
    const HWND form = Owner().Window();
    const auto command = static_cast<UINT>(TrackPopupMenu(
        menu.get(), TPM_RETURNCMD | TPM_NONOTIFY | TPM_RIGHTBUTTON, at.x, at.y, 0, form, nullptr));
    if (!Window() || command == 0) return; // closed meanwhile, or nothing chosen
    if (command < kFirstSort)
        ChooseAll(command == kAll);
    else
        SortBy(command - kFirstSort);
}

void ChoiceView::Move(const TwipRect& place)
{
    Control::Move(place);
    if (!HasHeadings()) FitColumns();
}

void ChoiceView::SetFont(const FontSpec& font)
{
    Control::SetFont(font);
    FitColumns();
}

void ChoiceView::Toggle(int row)
{
    const size_t line = choices_->LineOf(static_cast<size_t>(row));
    choices_->Choose(line, !choices_->IsChosen(line));
    Send(LVM_REDRAWITEMS, static_cast<WPARAM>(row), row);
    // The list view does not know of the change, and screen readers would not hear of it.
    NotifyWinEvent(EVENT_OBJECT_STATECHANGE, Window(), OBJID_CLIENT, row + 1);
}

void ChoiceView::SortBy(size_t column)
{
    Collect();
    choices_->SortBy(column);
    ShowRows();
    const auto header = reinterpret_cast<HWND>(Send(LVM_GETHEADER));
    for (size_t each = 0; each < headings_.size(); ++each) {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(header, HDM_GETITEMW, each, reinterpret_cast<LPARAM>(&item));
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        if (each == column) item.fmt |= choices_->Descending() ? HDF_SORTDOWN : HDF_SORTUP;
        SendMessageW(header, HDM_SETITEMW, each, reinterpret_cast<LPARAM>(&item));
    }
}

LRESULT ChoiceView::OnNotify(NMHDR& notification)
{
    switch (notification.code) {
    case LVN_GETDISPINFOW: Describe(reinterpret_cast<NMLVDISPINFOW&>(notification).item); return 0;
    case LVN_COLUMNCLICK:
        SortBy(static_cast<size_t>(reinterpret_cast<const NMLISTVIEW&>(notification).iSubItem));
        return 0;
    case LVN_ODFINDITEMW: {
        const auto& wanted = reinterpret_cast<const NMLVFINDITEMW&>(notification);
        if (!(wanted.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL))) return -1;
        const auto row = choices_->FindRow(wanted.lvfi.psz, static_cast<size_t>(wanted.iStart));
        return row ? static_cast<LRESULT>(*row) : -1;
    }
    case LVN_KEYDOWN:
        if (kind_ == Kind::Checks &&
            reinterpret_cast<const NMLVKEYDOWN&>(notification).wVKey == VK_SPACE) {
            const int row = NextRow(-1, LVNI_FOCUSED);
            if (row >= 0) Toggle(row);
        }
        return 0;
    case NM_CLICK:
    case NM_DBLCLK: {
        LVHITTESTINFO hit{};
        hit.pt = reinterpret_cast<const NMITEMACTIVATE&>(notification).ptAction;
        const auto row =
            static_cast<int>(Send(LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
        if (row < 0) return 0;
        if (kind_ == Kind::Checks)
            Toggle(row);
        else if (kind_ == Kind::Single && notification.code == NM_DBLCLK)
            handlers_.onDoubleClick();
        return 0;
    }
    default: return 0;
    }
}

// What the list view shows of a row.
void ChoiceView::Describe(LVITEMW& item) const noexcept
{
    if (item.iItem < 0 || static_cast<size_t>(item.iItem) >= choices_->Rows()) return;
    const size_t line = choices_->LineOf(static_cast<size_t>(item.iItem));
    if (item.mask & LVIF_TEXT)
        CopyShown(choices_->Cell(line, static_cast<size_t>(item.iSubItem)), ShowsBlanks(),
                  item.pszText, static_cast<size_t>(item.cchTextMax));
    if (item.mask & LVIF_STATE)
        item.state |= static_cast<UINT>(INDEXTOSTATEIMAGEMASK(choices_->IsChosen(line) ? 2 : 1));
}

bool ChoiceView::OnCharacter(wchar_t unit)
{
    if (unit == kSelectAll) {
        ToggleAll();
        return true;
    }
    if (unit == L' ' && kind_ == Kind::Checks) return true; // the key has toggled the box
    if (!handlers_.onType || (unit <= L' ' && unit != L'\b')) return false;
    handlers_.onType(unit);
    return true;
}

// Columns with headings are as wide as their widest cell; one without is at least as wide as the
// list.
void ChoiceView::FitColumns() noexcept
{
    const int resolution = Owner().ToPixels(1440);
    HIMAGELIST boxes = reinterpret_cast<HIMAGELIST>(Send(LVM_GETIMAGELIST, LVSIL_STATE));
    int boxWidth = 0;
    int boxHeight = 0;
    if (boxes) ImageList_GetIconSize(boxes, &boxWidth, &boxHeight);
    for (size_t column = 0; column < longest_.size(); ++column) {
        int width = 0;
        const auto measure = [&](std::wstring_view text, int margin) {
            wchar_t shown[kShownUnits + 1];
            CopyShown(text, ShowsBlanks(), shown, std::size(shown));
            const auto needed =
                static_cast<int>(Send(LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(shown)));
            width = std::max(width, needed + MulDiv(margin, resolution, 96));
        };
        for (const std::wstring& cell : longest_[column])
            measure(cell, kCellMargin);
        if (column == 0) width += boxWidth;
        if (HasHeadings()) {
            measure(headings_[column], kHeadingMargin);
        } else {
            RECT inner{};
            GetClientRect(Window(), &inner);
            width = std::max<int>(width, inner.right);
        }
        Send(LVM_SETCOLUMNWIDTH, column, width);
    }
}

} // namespace quill
