// The form of Quill.DriveList.
#pragma once

#include <memory>

#include "dialogs/Dialog.h"

namespace quill {

// What is known of a drive (a letter and a colon) besides its letter: the share of a network drive,
// or the volume's label. Takes as long as the drive takes to answer.
std::wstring NameOfDrive(const std::wstring& drive);

// A seam: what the drives answer.
struct DriveFunctions {
    std::function<std::wstring(const std::wstring& drive)> nameOf = NameOfDrive;
};

class frmDrives final : public DialogForm {
public:
    explicit frmDrives(const DialogSettings& settings);
    ~frmDrives() override;

    // Shows all drives, with `drive` (a letter and a colon) selected, or else the current
    // directory's, and waits for the user. Returns the chosen entry: a letter and a colon, then, as
    // far as they are known, a volume label or a network name in brackets. An empty string when
    // the user cancelled.
    std::wstring List(const std::wstring& drive, const std::wstring& title,
                      const std::function<bool()>& abandoned);

private:
    struct Names;

    void OnActivate() override;
    void OnResize(TwipSize outer) override;
    void OnPosted(WPARAM index) override;

    void AskForNames();
    void Accept();

    const DialogSettings& settings_;
    std::vector<std::wstring> entries_;
    std::shared_ptr<Names> names_; // also of the threads that ask
    std::wstring result_;

    Label lblText{*this, {240, 120, 2535, kInfoHeight}};
    DropDownList lstDrives{*this, {240, 1160, 2600, 0}};
    Button OKButton{*this,
                    {1440, 1920, kButtonWidth, kButtonHeight},
                    L"OK",
                    [this] { Accept(); },
                    Button::Kind::Default};
};

} // namespace quill
