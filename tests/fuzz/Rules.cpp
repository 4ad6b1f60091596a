#include "fuzz/Rules.h"

#include <cstring>

namespace quill::fuzz {

namespace {

constexpr Rule kRules[] = {
    {L"", L"FontEnlarge", Rule::Within, 0, 2},
    {L"BinFile", L"ErrorLevel", Rule::Within, 0, 2},
    {L"", L"ErrorLevel", Rule::Within, 0, 1},
    {L"", L"Title", Rule::Cut, 0, 256},
    {L"DriveList", L"Info", Rule::Cut, 0, 128},
    {L"DTPick", L"Info", Rule::Cut, 0, 128},
    {L"", L"Info", Rule::Cut, 0, 256},
    {L"DTPick", L"ControlMode", Rule::Within, 0, 2},
    {L"EventLog", L"mode", Rule::Between, 0, 3},
    {L"CheckList", L"Selection", Rule::Between, 0, (1 << 30) - 1},
    {L"CheckList", L"SelectionA", Rule::Between, 0, (1 << 30) - 1},
    {L"File", L"ExeType", Rule::Between, -1, 6},
    {L"File", L"ExeType2", Rule::Between, -1, 6},
    {L"File", L"TimeCompare", Rule::Between, -1, 2},
    {L"FileSelection", L"Dialog", Rule::Between, 0, 128},
    {L"System", L"NetworkType", Rule::Between, 0, 3},
    {L"System", L"BiosMode", Rule::Between, 0, 2},
    {L"DateTime", L"TimeZoneType", Rule::Between, -1, 2},
    {L"Registry", L"Access64", Rule::Within, 0, 2},
    {L"Registry", L"Continue", Rule::Within, 0, 64},
    {L"Registry", L"ItemType", Rule::Within, 0, 2},
    {L"Registry", L"KeyLevels", Rule::Within, 1, 64},
    {L"Registry", L"GetItems", Rule::Between, 0, 100'000},
    {L"Registry", L"RegEntryExists", Rule::Between, 0, 2},
    {L"Registry", L"RegEntryExists1", Rule::Between, 0, 2},
    {L"MessageBox", L"Buttons", Rule::Within, 0, 6},
    {L"MessageBox", L"DefButton", Rule::Between, 0, 768},
    {L"MessageBox", L"Options", Rule::Masked, 0, 0x3FB000},
    {L"MessageBox", L"Show", Rule::Between, 0, 11},
    {L"TaskDialog", L"Icon", Rule::Between, -9, 32518},
    {L"TaskDialog", L"FooterIcon", Rule::Between, -9, 32518},
    {L"TaskDialog", L"CustomButtonStyle", Rule::Within, 0, 2},
    {L"TaskDialog", L"Options", Rule::Masked, 0, 8 | 64 | 128 | 8192 | 32768},
    {L"TaskDialog", L"Show", Rule::Between, 0, 8},
    {L"TaskDialog", L"ShowEx", Rule::Between, 0, 132},
    {L"MInputBox", L"InputNumber", Rule::Within, 1, 10},
    {L"MInputBox", L"InputStart", Rule::Within, 0, 9},
    {L"MInputBox", L"TextLimit", Rule::Within, 1, 1024},
    {L"MInputBox", L"LabelEditRatio", Rule::Within, 1, 7},
    {L"MInputBox", L"AlignInput", Rule::Within, 0, 2},
    {L"MInputBox", L"AlignLabel", Rule::Within, 0, 2},
    {L"MInputBox", L"ShowTipControl", Rule::Within, 0, 2},
    {L"MInputBox", L"PasswordChar", Rule::FilledCut, 1, 1},
    {L"MInputBox", L"MinBalloonText", Rule::FilledCut, 0, 160},
    {L"MInputBox", L"MinBalloonTitle", Rule::FilledCut, 0, 80},
    {L"MInputBox", L"DlgCancelTime", Rule::Within, 0, 3600},
    {L"Notice", L"ErrorCode", Rule::Between, 0, 4},
    {L"Notice", L"TipText", Rule::Cut, 0, 127},
    {L"Notice", L"BalloonText", Rule::Cut, 0, 255},
    {L"Notice", L"BalloonTitle", Rule::Cut, 0, 63},
    {L"Notice", L"BalloonIcon", Rule::Within, 0, 5},
    {L"Notice", L"BIconFile", Rule::Cut, 0, 255},
    {L"Notice", L"BIconSize", Rule::Within, 0, 1},
    {L"Notice", L"IconFile", Rule::Cut, 0, 255},
    {L"Notice", L"IconSize", Rule::Within, 0, 1},
    {L"Notice", L"TrayClicked", Rule::Between, 0, 18},
    {L"Notice", L"ContextMenuItems", Rule::Between, 0, 8},
    {L"Window", L"WriteSize", Rule::Between, 6, 36},
    {L"Window2", L"WriteSize", Rule::Between, 6, 36},
    {L"ProgressWindow", L"ProgressStyle", Rule::Masked, 0, 25},
    {L"ProgressWindow", L"ProgressMarqueeTime", Rule::Between, 1, 1000},
    {L"ProgressWindow", L"ProgressState", Rule::Within, 1, 3},
    {L"ProgressWindow", L"Button", Rule::Within, 0, 2},
    {L"ProgressWindow", L"BtnNotifier", Rule::Within, 0, 2},
    {L"ProgressWindow", L"BtnPressed", Rule::Within, 0, 32767},
    {L"ProgressWindow", L"MainText", Rule::Cut, 0, 1024},
    {L"ProgressWindow", L"Text", Rule::Cut, 0, 1024},
    {L"ProgressWindow", L"SubText", Rule::Cut, 0, 1024},
    {L"ProgressWindow", L"TBProgress", Rule::Within, 0, 2},
    {L"ProgressWindow", L"TBProState", Rule::Between, 0, 8},
};

std::wstring_view TextOf(const VARIANT& value)
{
    return {V_BSTR(&value) ? V_BSTR(&value) : L"", SysStringLen(V_BSTR(&value))};
}

// Numbers as they are, texts as their length.
LONGLONG Measure(const VARIANT& value)
{
    switch (V_VT(&value)) {
    case VT_I2: return V_I2(&value);
    case VT_I4: return V_I4(&value);
    case VT_BSTR: return SysStringLen(V_BSTR(&value));
    default: return -1;
    }
}

} // namespace

const Rule* FindRule(std::wstring_view className, std::wstring_view member)
{
    for (const Rule& rule : kRules)
        if ((rule.className.empty() || rule.className == className) && rule.member == member)
            return &rule;
    return nullptr;
}

bool Possible(const Rule& rule, const VARIANT& value)
{
    if (rule.kind == Rule::Masked) return (Measure(value) & ~LONGLONG{rule.high}) == 0;
    return rule.low <= Measure(value) && Measure(value) <= rule.high;
}

bool Obeyed(const Rule& rule, const VARIANT& before, const VARIANT& put, const VARIANT& after)
{
    if (!Possible(rule, after)) return false;
    switch (rule.kind) {
    case Rule::Within: return Same(after, Possible(rule, put) ? put : before);
    case Rule::Masked: return Measure(after) == (Measure(put) & rule.high);
    case Rule::FilledCut:
        if (TextOf(put).empty()) return Same(after, before);
        [[fallthrough]];
    case Rule::Cut: return TextOf(after) == TextOf(put).substr(0, static_cast<size_t>(rule.high));
    default: return true;
    }
}

bool Same(const VARIANT& left, const VARIANT& right)
{
    if (V_VT(&left) != V_VT(&right)) return false;
    switch (V_VT(&left)) {
    case VT_BSTR: return TextOf(left) == TextOf(right);
    case VT_BOOL:
    case VT_I2: return V_I2(&left) == V_I2(&right);
    case VT_I4: return V_I4(&left) == V_I4(&right);
    case VT_CY:
    case VT_DATE: return V_I8(&left) == V_I8(&right);
    default: return true; // of arrays and objects, only the kind
    }
}

} // namespace quill::fuzz
