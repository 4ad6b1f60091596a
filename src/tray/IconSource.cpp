#include "tray/IconSource.h"

#include "core/Apartment.h"
#include "core/Text.h"
#include "gui/IconModule.h"

namespace quill {

namespace {

constexpr int kVista = 600;
constexpr LONG kFirstSystemIcon = 32501; // the shell's stock icons lie below

static_assert(sizeof(SHSTOCKICONINFO) == 536);

bool IsIconFile(const std::wstring& file)
{
    return UpperCase(file).ends_with(L".ICO");
}

Icon LoadStockIcon(const IconSource& source)
{
    SHSTOCKICONINFO info{};
    info.cbSize = sizeof info;
    const UINT flags = SHGSI_ICON | (source.Large() ? SHGSI_LARGEICON : SHGSI_SMALLICON);
    const auto& stock = Seam<IconFunctions>().stock;
    if (!stock || FAILED(stock(source.id, flags, &info))) return nullptr;
    return Icon(info.hIcon);
}

Icon LoadImageIcon(HMODULE module, PCWSTR name, bool large, UINT flags)
{
    const int side = large ? 0 : GetSystemMetrics(SM_CXSMICON);
    if (large) flags |= LR_DEFAULTSIZE;
    const auto icon = static_cast<HICON>(LoadImageW(module, name, IMAGE_ICON, side, side, flags));
    // A shared icon stays the system's; the copy is ours to destroy.
    return Icon(icon && (flags & LR_SHARED) ? CopyIcon(icon) : icon);
}

Icon LoadIconResource(const IconSource& source, bool useLoadImage)
{
    const bool isFile = IsIconFile(source.file);
    IconModule module;
    if (!isFile && !source.file.empty()) {
        module = LoadIconModule(source.file);
        if (!module) return nullptr;
    }
    // Beyond 16 bits the platform would take the number for the address of a name.
    if (!isFile && source.name.empty() && HIWORD(source.id) != 0) return nullptr;
    const IconName resource{LOWORD(source.id), isFile ? source.file : source.name};

    if (useLoadImage) {
        const UINT flags = isFile ? LR_LOADFROMFILE : module ? 0 : LR_SHARED;
        return LoadImageIcon(module.get(), resource.Pointer(), source.Large(), flags);
    }
    HICON icon = nullptr;
    const auto& metric = Seam<IconFunctions>().metric;
    if (!metric || FAILED(metric(module.get(), resource.Pointer(),
                                 source.Large() ? LIM_LARGE : LIM_SMALL, &icon)))
        return nullptr;
    return Icon(icon);
}

} // namespace

bool IsVistaOrLater() noexcept
{
    return ThisApartment().osVersion >= kVista;
}

Icon LoadNoticeIcon(const IconSource& source, bool useLoadImage, LONG& error)
{
    const bool isStock = source.file.empty() && source.id < kFirstSystemIcon;
    error = !IsVistaOrLater() && (isStock || !useLoadImage) ? kIconNeedsVista : kNoError;
    if (error != kNoError) return nullptr;
    Icon icon = isStock ? LoadStockIcon(source) : LoadIconResource(source, useLoadImage);
    if (!icon) error = kNoIcon;
    return icon;
}

} // namespace quill
