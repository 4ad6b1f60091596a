#include "dialogs/DTPick.h"

#include "core/Catalogue.h"
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

bool DTPick::Selection(VARIANT& date)
{
    if (open_ || IsArrayByReference(date)) return false;
    const FlagScope open(open_);
    DialogSettings settings = settings_; // a call that comes in meanwhile may change them
    settings.dlgCancelEsc = true;
    std::optional<DATE> chosen;
    try {
        frmDTPick form(settings, static_cast<PickMode>(mode_));
        chosen = form.Pick(StartTime(date), title_, [this] { return ClientsGone(); });
    } catch (const AutomationError&) {
        return false; // the platform refused a control
    }
    if (chosen) Assign(date, Variant::OfDate(*chosen));
    return chosen.has_value();
}

} // namespace quill
