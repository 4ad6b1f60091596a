#include "dialogs/DTPick.h"

#include <optional>

#include "core/Catalogue.h"
#include "core/Dates.h"
#include "core/quillfn.h"
#include "dialogs/frmDTPick.h"

namespace quill {

namespace {

// The time to begin with: the date that a script gives, or else now.
SYSTEMTIME StartTime(const VARIANT& given)
{
    const Variant value = Variant::Dereferenced(given);
    if (V_VT(&value) == VT_DATE)
        if (const std::optional<SYSTEMTIME> parts = PartsOf(V_DATE(&value))) return *parts;
    SYSTEMTIME now;
    GetLocalTime(&now);
    return now;
}

} // namespace

CREATABLE(DTPick)

DTPick::DTPick()
{
    settings_.dlgCancelEsc = true;
}

bool DTPick::Selection(VARIANT& date)
{
    Showing showing(*this);
    if (open_ || IsArrayByReference(date)) return false;
    const FlagScope open(open_);
    std::optional<DATE> chosen;
    try {
        chosen = frmDTPick(showing.Request(), static_cast<PickMode>(mode_))
                     .Pick(StartTime(date), title_);
    } catch (const AutomationError&) {
        return false; // the platform refused a control
    }
    if (chosen) Assign(date, Variant::OfDate(*chosen));
    return chosen.has_value();
}

} // namespace quill
