// Quill.Notice: an icon in the notification area of the taskbar, with balloons and a menu.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/EventSource.h"
#include "tray/IconSource.h"
#include "tray/frmNoteMsg.h"
#include "tray/notify.h"

namespace quill {

// Raises no errors of its own: results and ErrorCode report failures.
class Notice final : public EventSource<_Notice> {
public:
    Notice();
    ~Notice() override;

    METHOD(VARIANT_BOOL, Add, ())
    METHOD(VARIANT_BOOL, ChangeIcon, ())
    STDMETHODIMP Remove() noexcept override;
    METHOD(VARIANT_BOOL, ShowBalloon, ())
    READ_ONLY_PROPERTY(LONG, ErrorCode, errorCode_)
    PROPERTY_SET_BY(BSTR, TipText, tipText_, Notice::SetTipText)
    STORED_PROPERTY(BSTR, BalloonText, balloonText_, CutTo<255>)
    STORED_PROPERTY(BSTR, BalloonTitle, balloonTitle_, CutTo<63>)
    STORED_PROPERTY(LONG, BalloonOptions, balloonOptions_)
    STORED_PROPERTY(SHORT, BalloonIcon, balloonKind_, Within<kCustomIcon, kTrayIcon>)
    STORED_PROPERTY(LONG, BIconID, balloonSource_.id)
    STORED_PROPERTY(BSTR, BIconName, balloonSource_.name)
    STORED_PROPERTY(BSTR, BIconFile, balloonSource_.file, CutTo<255>)
    STORED_PROPERTY(SHORT, BIconSize, balloonSource_.size, Within<0, 1>)
    STORED_PROPERTY(LONG, IconID, traySource_.id)
    STORED_PROPERTY(BSTR, IconName, traySource_.name)
    STORED_PROPERTY(BSTR, IconFile, traySource_.file, CutTo<255>)
    STORED_PROPERTY(SHORT, IconSize, traySource_.size, Within<0, 1>)
    STORED_PROPERTY(VARIANT_BOOL, UseLoadImageAPI, useLoadImage_)
    STORED_PROPERTY(VARIANT_BOOL, TriggerEvent, triggerEvent_)
    // The puts acknowledge what has come; the value does not matter.
    READ_ONLY_PROPERTY(VARIANT_BOOL, BalloonClicked, balloonClicked_)
    STDMETHODIMP put_BalloonClicked(VARIANT_BOOL) noexcept override
    {
        balloonClicked_ = false;
        return S_OK;
    }
    READ_ONLY_PROPERTY(SHORT, TrayClicked, trayClicked_)
    STDMETHODIMP put_TrayClicked(SHORT) noexcept override
    {
        trayClicked_ = 0;
        return S_OK;
    }
    READ_ONLY_PROPERTY(VARIANT, ContextMenu, contextMenu_)
    PROPERTY_PUT(VARIANT*, ContextMenu, Notice::SetContextMenu)
    READ_ONLY_PROPERTY(SHORT, ContextMenuItems, static_cast<SHORT>(menuTexts_.size()))
    STORED_PROPERTY(VARIANT_BOOL, AutoRestore, autoRestore_)
    METHOD(SHORT, WaitClick, (LONG milliseconds), milliseconds)

    // From the platform, on any thread: a menu that is open when the clients go is closed.
    STDMETHODIMP_(DWORD) ReleaseConnection(DWORD type, DWORD reserved, BOOL last) noexcept override;

    // From the hook: a notification code of the icon and where it happened, in screen pixels; that
    // a taskbar was made; and that it is time to try again to put the icon there.
    void OnIcon(UINT code, POINT screen);
    void OnNewTaskbar();
    void OnRestoreTime();

private:
    static constexpr SHORT kCustomIcon = 0; // values of BalloonIcon
    static constexpr SHORT kTrayIcon = 5;

    bool Require(bool state) noexcept;
    bool Add();
    bool ChangeIcon();
    bool ShowBalloon();
    SHORT WaitClick(LONG milliseconds);
    void EndRestoring(bool there) noexcept;
    HICON FindBalloonIcon(bool& large);
    void SetTipText(const std::wstring& text);
    void SetContextMenu(Variant menu);
    int ShowMenu(POINT screen);
    void ReportClick(SHORT code);
    void ReportBalloonClick();
    void FireIfArmed(const std::function<bool()>& fire);

    frmNoteMsg form_;
    const TrayPlace place_;
    bool added_ = false;
    bool busy_ = false; // a click is being reported
    bool menuOpen_ = false;
    bool autoRestore_ = false;
    int restoreTries_ = 0; // that are left, while a new taskbar has no icon yet
    LONG errorCode_ = kNoError;

    IconSource traySource_;
    Icon trayIcon_;
    bool trayIconLarge_ = false; // the one that is shown
    bool useLoadImage_ = false;
    std::wstring tipText_;

    std::wstring balloonText_;
    std::wstring balloonTitle_;
    LONG balloonOptions_ = 0;
    SHORT balloonKind_ = kCustomIcon;
    IconSource balloonSource_{0, {}, {}, 1};
    Icon balloonIcon_;

    bool triggerEvent_ = false;
    bool balloonClicked_ = false;
    SHORT trayClicked_ = 0;
    Variant contextMenu_; // as it was given
    std::vector<std::wstring> menuTexts_;
};

} // namespace quill
