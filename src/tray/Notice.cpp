#include "tray/Notice.h"

#include <windowsx.h>

#include <algorithm>
#include <new>
#include <utility>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "gui/MessageHook.h"
#include "gui/windowfn.h"
#include "tray/MenuFn.h"

namespace quill {

namespace {

constexpr DISPID kTrayClick = 1;
constexpr DISPID kBalloonClick = 2;

// Click codes.
constexpr SHORT kSelected = 1;
constexpr SHORT kMenuRequested = 2;
constexpr SHORT kMenuClosed = 10; // plus the chosen item, from 1

constexpr SHORT kBalloon = 100; // of WaitClick

constexpr size_t kMenuLimit = 8;

// How often, and how many times, the icon is offered to a new taskbar that is busy.
constexpr UINT_PTR kRestoreTimer = 1;
constexpr UINT kRestorePause = 1000; // milliseconds
constexpr int kRestoreTries = 60;

// Bits of BalloonOptions.
constexpr LONG kSilent = 1;
constexpr LONG kRealTime = 2;
constexpr LONG kRespectQuietTime = 4;

UINT IconNumber()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return (now.wHour * 3600U + now.wMinute * 60U + now.wSecond) % 1000;
}

std::wstring TextOrNone(const VARIANT& element)
{
    try {
        return ToText(element);
    } catch (const AutomationError&) {
        return {};
    }
}

// Up to the limit; none for what is not a zero-based array. What cannot be converted leaves its
// place empty, so that the others keep their number.
std::vector<std::wstring> MenuTexts(const VARIANT& menu)
{
    const SAFEARRAY* array = ArrayOf(menu);
    if (!array || array->cDims == 0) return {};
    // Kept as published: of several dimensions the first one counts, which the platform stores
    // last, and all texts are empty.
    const SAFEARRAYBOUND& bound = array->rgsabound[array->cDims - 1];
    if (bound.lLbound != 0) return {};
    std::vector<std::wstring> texts(std::min<size_t>(bound.cElements, kMenuLimit));
    try {
        std::ranges::transform(ElementsOf(*array, texts.size()), texts.begin(), TextOrNone);
    } catch (const AutomationError&) {
        // several dimensions, or records
    }
    return texts;
}

// What the hidden window receives: subclassed, the object learns of clicks on its icon and of a new
// taskbar. `taskbarCreated` is the number of the message by which a new taskbar announces itself.
LRESULT CALLBACK NoticeHook(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR owner,
                            DWORD_PTR taskbarCreated) noexcept
{
    auto* notice = reinterpret_cast<Notice*>(owner);
    const ComPtr<_Notice> alive(notice); // a handler may release the object
    try {
        if (message == kTrayCallback) {
            // No sender waits while handlers and menus take their time; automation refuses calls
            // out of a message whose sender waits.
            ReplyMessage(0);
            notice->OnIcon(LOWORD(lParam), {GET_X_LPARAM(wParam), GET_Y_LPARAM(wParam)});
        } else if (message == taskbarCreated) {
            notice->OnNewTaskbar();
        } else if (message == WM_TIMER && wParam == kRestoreTimer) {
            notice->OnRestoreTime();
        } else if (message == WM_ENDSESSION && wParam) {
            notice->Remove();
        }
    } catch (...) {
        // There is no caller to report to.
    }
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) RemoveHook(window, notice, NoticeHook);
    return result;
}

} // namespace

CREATABLE(Notice)

Notice::Notice() : place_{form_.Window(), IconNumber()}
{
    const UINT taskbarCreated = HearShell(form_.Window(), L"TaskbarCreated");
    if (!InstallHook(form_.Window(), this, NoticeHook, taskbarCreated)) throw std::bad_alloc();
}

Notice::~Notice()
{
    // In this order: the calls that take the icon away let other messages in.
    RemoveHook(form_.Window(), this, NoticeHook);
    DeleteTrayIcon(place_);
}

bool Notice::Require(bool state) noexcept
{
    if (!state) errorCode_ = kWrongState;
    return state;
}

bool Notice::Add()
{
    if (!Require(!added_)) return false;
    Icon icon = LoadNoticeIcon(traySource_, useLoadImage_, errorCode_);
    if (!icon) return false;
    trayIconLarge_ = traySource_.Large();
    trayClicked_ = 0;
    added_ = AddTrayIcon(place_, icon.get(), tipText_);
    if (added_) trayIcon_ = std::move(icon);
    return added_;
}

bool Notice::ChangeIcon()
{
    if (!Require(added_)) return false;
    Icon icon = LoadNoticeIcon(traySource_, useLoadImage_, errorCode_);
    if (!icon) return false;
    trayIconLarge_ = traySource_.Large();
    trayIcon_ = std::move(icon);
    return ChangeTrayIcon(place_, trayIcon_.get());
}

// After a crash of the shell the icon is gone; where only the resolution has changed, it stays.
void Notice::OnNewTaskbar()
{
    if (!added_ || ChangeTrayIcon(place_, trayIcon_.get())) return;
    restoreTries_ = kRestoreTries;
    OnRestoreTime();
}

void Notice::OnRestoreTime()
{
    if (restoreTries_ == 0) return; // a message that was on its way when the timer was stopped
    const bool there = autoRestore_ && AddTrayIcon(place_, trayIcon_.get(), tipText_);
    if (there || !autoRestore_ || --restoreTries_ == 0 ||
        ::SetTimer(form_.Window(), kRestoreTimer, kRestorePause, nullptr) == 0)
        EndRestoring(there);
}

void Notice::EndRestoring(bool there) noexcept
{
    added_ = there;
    restoreTries_ = 0;
    KillTimer(form_.Window(), kRestoreTimer);
}

HRESULT Notice::Remove() noexcept
{
    return Run([&] {
        SendMessageW(form_.Window(), WM_CANCELMODE, 0, 0); // an open menu goes too
        DeleteTrayIcon(place_);
        balloonIcon_.reset();
        trayIcon_.reset();
        EndRestoring(false);
    });
}

// The icon of a balloon without a standard one; null, with an error code, where there is none.
HICON Notice::FindBalloonIcon(bool& large)
{
    if (balloonKind_ == kTrayIcon) {
        large = trayIconLarge_;
        if (!trayIcon_) errorCode_ = kNoIcon;
        return trayIcon_.get();
    }
    if (!IsVistaOrLater()) {
        errorCode_ = kBalloonNeedsVista;
        return nullptr;
    }
    balloonIcon_ = LoadNoticeIcon(balloonSource_, useLoadImage_, errorCode_);
    return balloonIcon_.get();
}

bool Notice::ShowBalloon()
{
    if (!Require(added_)) return false;
    balloonClicked_ = false;
    errorCode_ = kNoError;

    Balloon balloon{balloonText_, balloonTitle_};
    bool large = balloonSource_.Large();
    if (balloonKind_ == kCustomIcon || balloonKind_ == kTrayIcon) {
        balloon.icon = FindBalloonIcon(large);
        if (!balloon.icon) return false;
        balloon.infoFlags = NIIF_USER;
    } else {
        balloon.infoFlags = static_cast<DWORD>(balloonKind_ - 1);
    }
    if (balloonOptions_ & kSilent) balloon.infoFlags |= NIIF_NOSOUND;
    if (balloonOptions_ & kRespectQuietTime) balloon.infoFlags |= NIIF_RESPECT_QUIET_TIME;
    if (large) balloon.infoFlags |= NIIF_LARGE_ICON;
    balloon.realTime = balloonOptions_ & kRealTime;
    return ShowTrayBalloon(place_, balloon);
}

// Within a handler there is nothing to wait for: what comes in meanwhile is dropped.
SHORT Notice::WaitClick(LONG milliseconds)
{
    if (!added_ || busy_) return 0;
    WaitWhile(milliseconds,
              [this] { return added_ && trayClicked_ == 0 && !balloonClicked_ && !ClientsGone(); });
    if (trayClicked_ != 0) return std::exchange(trayClicked_, SHORT{0});
    return std::exchange(balloonClicked_, false) ? kBalloon : SHORT{0};
}

void Notice::SetTipText(const std::wstring& text)
{
    tipText_ = CutTo<127>::Apply(tipText_, text);
    if (added_) ChangeTrayTip(place_, tipText_);
}

void Notice::SetContextMenu(Variant menu)
{
    if (!IsVistaOrLater()) return;
    std::vector<std::wstring> texts = MenuTexts(menu);
    contextMenu_ = std::move(menu);
    menuTexts_ = std::move(texts);
}

DWORD Notice::ReleaseConnection(DWORD type, DWORD reserved, BOOL last) noexcept
{
    const DWORD left = EventSource::ReleaseConnection(type, reserved, last);
    if (ClientsGone()) PostMessageW(form_.Window(), WM_CANCELMODE, 0, 0);
    return left;
}

void Notice::OnIcon(UINT code, POINT screen)
{
    switch (code) {
    case WM_CONTEXTMENU:
        if (menuOpen_) break; // no second one over the first
        ReportClick(menuTexts_.empty() ? kMenuRequested
                                       : static_cast<SHORT>(kMenuClosed + ShowMenu(screen)));
        break;
    case NIN_SELECT:
    case NIN_KEYSELECT: ReportClick(kSelected); break;
    case NIN_BALLOONUSERCLICK: ReportBalloonClick(); break;
    default: break;
    }
}

int Notice::ShowMenu(POINT screen)
{
    const Foreground& foreground = Seam<Foreground>();
    const HWND before = foreground.get();
    const FlagScope open(menuOpen_);
    const std::vector<std::wstring> texts = menuTexts_; // a script may set others meanwhile
    const int chosen = ChooseFromMenu(form_.Window(), texts, screen);
    // The keyboard must not stay with a window that nobody sees.
    if (!FocusTray(place_) && foreground.get() == form_.Window()) foreground.set(before);
    return chosen;
}

void Notice::ReportClick(SHORT code)
{
    if (busy_) return; // one click at a time: what comes in meanwhile is dropped
    trayClicked_ = code;
    FireIfArmed([&] { return Fire(kTrayClick, code); });
}

void Notice::ReportBalloonClick()
{
    if (busy_) return;
    balloonClicked_ = true;
    FireIfArmed([&] { return Fire(kBalloonClick); });
}

// The event stays armed if the client was too busy.
void Notice::FireIfArmed(const std::function<bool()>& fire)
{
    const FlagScope busy(busy_);
    if (std::exchange(triggerEvent_, false) && !fire()) triggerEvent_ = true;
    DispatchPending();
}

} // namespace quill
