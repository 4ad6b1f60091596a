// Quill.ProgressDialog: the shell's progress dialog, which runs on a thread of its own.
#pragma once

#include "core/Automation.h"

#include <shlobj.h>

#include <functional>
#include <string>

namespace quill {

// The shell's dialog. Throws AutomationError where there is none.
ComPtr<IProgressDialog> CreateShellDialog();

// A seam: where the shell's dialogs come from.
struct ShellDialogs {
    std::function<ComPtr<IProgressDialog>()> create = CreateShellDialog;
};

// What the dialog refuses is an error of the call, except in SetTimer.
class ProgressDialog final : public Automation<_ProgressDialog> {
public:
    ProgressDialog();
    ~ProgressDialog() override;

    STDMETHODIMP StartDlg(LONG flags) noexcept override;
    STDMETHODIMP StopDlg() noexcept override;
    STDMETHODIMP SetProgress(LONG dwCompleted, LONG dwTotal) noexcept override;
    STDMETHODIMP SetProgress64(CURRENCY dwCompleted, CURRENCY dwTotal) noexcept override;
    ACTION(SetText, (BSTR txt, SHORT line, VARIANT_BOOL cp), txt, line, cp)
    STDMETHODIMP SetTimer(LONG action) noexcept override;
    COMPUTED_PROPERTY(VARIANT_BOOL, Cancellation)
    PROPERTY_SET_BY(BSTR, CancelMsg, cancelMsg_, ProgressDialog::SetCancelMsg)
    PROPERTY_SET_BY(BSTR, Title, title_, ProgressDialog::SetTitle)

private:
    void SetText(const std::wstring& text, SHORT line, bool compact);
    bool Cancellation() const;
    void SetCancelMsg(const std::wstring& text);
    void SetTitle(const std::wstring& title);

    ComPtr<IProgressDialog> dialog_;
    bool started_ = false;
    std::wstring title_ = L"QUILL Progress Dialog";
    std::wstring cancelMsg_;
    SHORT lastLine_ = 3; // 2 if the dialog shows the time left
};

} // namespace quill
