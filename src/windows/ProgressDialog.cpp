#include "windows/ProgressDialog.h"

#include <utility>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/quillfn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// The shell's class; the constant in the platform's headers has our class's name.
constexpr CLSID kShellDialog{
    0xF8383852, 0xFCD3, 0x11D1, {0xA6, 0xB9, 0x00, 0x60, 0x97, 0xDF, 0x5B, 0xD4}};

// The dialog is never modal: a script has no window that it could lock.
constexpr LONG kAllowedFlags = PROGDLG_AUTOTIME | PROGDLG_NOTIME | PROGDLG_NOMINIMIZE |
                               PROGDLG_NOPROGRESSBAR | PROGDLG_MARQUEEPROGRESS | PROGDLG_NOCANCEL;

} // namespace

CREATABLE(ProgressDialog)

ComPtr<IProgressDialog> CreateShellDialog()
{
    ComPtr<IProgressDialog> dialog;
    Check(CoCreateInstance(kShellDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IProgressDialog,
                           reinterpret_cast<void**>(dialog.GetAddressOf())));
    return dialog;
}

ProgressDialog::ProgressDialog() : dialog_(Seam<ShellDialogs>().create()) {}

ProgressDialog::~ProgressDialog()
{
    if (started_) dialog_->StopProgressDialog();
}

HRESULT ProgressDialog::StartDlg(LONG flags) noexcept
{
    return Run([&] {
        if (started_) return;
        const LONG allowed = flags & kAllowedFlags;
        lastLine_ = allowed & PROGDLG_AUTOTIME ? 2 : 3;
        Check(dialog_->StartProgressDialog(nullptr, nullptr, static_cast<DWORD>(allowed), nullptr));
        started_ = true; // even where the title is refused, it is to be stopped
        Check(dialog_->SetTitle(title_.c_str()));
    });
}

HRESULT ProgressDialog::StopDlg() noexcept
{
    return Run([&] {
        if (!std::exchange(started_, false)) return;
        Check(dialog_->StopProgressDialog());
    });
}

HRESULT ProgressDialog::SetProgress(LONG completed, LONG total) noexcept
{
    return Run([&] {
        if (started_)
            Check(dialog_->SetProgress(static_cast<DWORD>(completed), static_cast<DWORD>(total)));
    });
}

HRESULT ProgressDialog::SetProgress64(CURRENCY completed, CURRENCY total) noexcept
{
    return Run([&] {
        if (started_)
            Check(dialog_->SetProgress64(static_cast<ULONGLONG>(completed.int64),
                                         static_cast<ULONGLONG>(total.int64)));
    });
}

void ProgressDialog::SetText(const std::wstring& text, SHORT line, bool compact)
{
    if (started_ && InRange(line, 1, lastLine_))
        Check(dialog_->SetLine(static_cast<DWORD>(line), text.c_str(), compact, nullptr));
}

HRESULT ProgressDialog::SetTimer(LONG action) noexcept
{
    return Run([&] {
        if (started_ && InRange(action, PDTIMER_RESET, PDTIMER_RESUME))
            dialog_->Timer(static_cast<DWORD>(action), nullptr);
    });
}

bool ProgressDialog::Cancellation() const
{
    return started_ && dialog_->HasUserCancelled() > 0;
}

void ProgressDialog::SetCancelMsg(const std::wstring& text)
{
    cancelMsg_ = text;
    Check(dialog_->SetCancelMsg(text.c_str(), nullptr));
}

void ProgressDialog::SetTitle(const std::wstring& title)
{
    title_ = title.substr(0, kTitleLimit);
    Check(dialog_->SetTitle(title_.c_str()));
}

} // namespace quill
