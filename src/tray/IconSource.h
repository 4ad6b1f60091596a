// Where the icon of a Notice, or of its balloon, comes from.
#pragma once

#include <functional>
#include <string>

#include "core/Platform.h"

namespace quill {

using Icon = Owned<HICON, DestroyIcon>;

// Values of ErrorCode.
enum NoticeError : LONG {
    kNoError = 0,
    kWrongState = 1,       // added already, or not added
    kNoIcon = 2,           // it could not be loaded
    kIconNeedsVista = 3,   // this way of loading needs Windows 6.0
    kBalloonNeedsVista = 4 // so does a balloon icon of the script's own
};

// True on Windows 6.0 and later.
bool IsVistaOrLater() noexcept;

struct IconSource {
    LONG id = 0;       // of the shell below 32501, of the system or of a resource
    std::wstring name; // of a resource, in place of its id
    std::wstring file; // an .ico file, or a module with resources; empty: shell or system
    SHORT size = 0;    // 0 small, 1 large

    bool Large() const noexcept { return size == 1; }
};

// Loads the icon, by LoadImage or else by LoadIconMetric. Where there is none, the result is null
// and `error` says why.
Icon LoadNoticeIcon(const IconSource& source, bool useLoadImage, LONG& error);

// A seam: the platform's ways to load icons, null where this Windows lacks them.
struct IconFunctions {
    std::function<HRESULT(int, UINT, SHSTOCKICONINFO*)> stock =
        FindSystemFunction<HRESULT WINAPI(int, UINT, SHSTOCKICONINFO*)>(L"shell32.dll",
                                                                        "SHGetStockIconInfo");
    std::function<HRESULT(HINSTANCE, PCWSTR, int, HICON*)> metric =
        FindSystemFunction<decltype(::LoadIconMetric)>(L"comctl32.dll", "LoadIconMetric");
};

} // namespace quill
