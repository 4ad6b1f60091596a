// The form of Quill.DriveList.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

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
    explicit frmDrives(DialogRequest request);
    ~frmDrives() override;

    // Shows all drives, with `drive` (a letter and a colon) selected, or else the current
    // directory's, and waits for the user. Returns the chosen entry: a letter and a colon, then, as
    // far as they are known, a volume label or a network name in brackets. An empty string when
    // the user cancelled.
    std::wstring List(const std::wstring& drive, const std::wstring& title);

private:
    struct Names;

    bool OnPreview(const MSG& message) override;
    void OnActivate() override;
    void OnResize(TwipSize outer) override;
    void OnPosted(WPARAM index) override; // the name of this drive is known
    bool OnAccept() override;

    void AskForNames();
    float Widening() const; // beyond the design, for two buttons

    std::vector<std::wstring> entries_;
    std::shared_ptr<Names> names_; // shared with the threads that ask
    std::wstring result_;

    DropDownList lstDrives{*this, {240, 1160, 2600, 0}};
};

} // namespace quill
