// The published contract: what scripts, editors and compilers rely on by name.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "core/Catalogue.h"
#include "core/TypeLibrary.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// Every member of every interface, in the order of the type library, with exactly the published
// letters: dispatch id, name, parameters with types and defaults, result. Properties have the
// accesses that they offer behind their type.
constexpr char kContract[] = R"(
_BinFile
  1 BRead(out vdata VARIANT*, [numbytes I4 = 0], [vtype I4 = 0]) BOOL
  2 BWrite(vdata VARIANT*, [numbytes I4 = 0]) BOOL
  3 BTrim() BOOL
  4 BFlush()
  5 BClose()
  6 ByteCount I4 get
  7 EOF BOOL get
  8 ErrorLevel I4 get put
  9 ConvertAnsi BOOL get put
  10 UseUnicode BOOL get put
  11 UseHexstring BOOL get put
  12 TwistEndian BOOL get put
  13 handle I4 get
  14 Length I4 get
  15 Length2 I4 get
  16 Location I4 get put
  17 Location2 I4 get put
  18 LOC CY get put
  19 LOF CY get
_Window
  1 Create([t BSTR = ""])
  2 Remove()
  3 Cls()
  4 WriteLine(s BSTR)
  5 Flash([num I4 = 3])
  6 handle I4 get
  7 Title BSTR get put
  8 Topmost BOOL get put
  9 WriteBold BOOL get put
  10 WriteFont BSTR get put
  11 WriteSize I2 get put
_Window2
  1 Create([t BSTR = ""])
  2 Remove()
  3 Cls()
  4 WriteLine(s BSTR)
  5 Flash([num I4 = 3])
  6 handle I4 get
  7 Title BSTR get put
  8 Topmost BOOL get put
  9 WriteBold BOOL get put
  10 WriteFont BSTR get put
  11 WriteSize I2 get put
  12 Scroll BOOL get put
_Me
  1 About BSTR get
  2 hInstance I4 get
  3 Path BSTR get
  4 ProcessID I4 get
  5 ThreadID I4 get
  6 Version BSTR get
  7 ParentProcessID I4 get
  8 CallerTID I4 get
  9 FullVersion BSTR get
  10 Has(name BSTR) BOOL
  11 Interactive BOOL get
_DriveList
  1 ButtonText BSTR get put
  2 Crop BOOL get put
  3 FontEnlarge I2 get put
  4 FontModernize BOOL get put
  5 Info BSTR get put
  6 Topmost BOOL get put
  7 Selection(default BSTR, [Title BSTR = ""]) BSTR
  8 Timeout I4 get put
  9 TimeoutAccepts BOOL get put
  10 ShowCountdown BOOL get put
  11 CancelText BSTR get put
  12 Outcome I2 get
_List
  1 MultiSel BOOL get put
  2 ButtonText BSTR get put
  3 DlgCancelEsc BOOL get put
  4 FontEnlarge I2 get put
  5 FontModernize BOOL get put
  6 Info BSTR get put
  7 Topmost BOOL get put
  8 Selection(items BSTR, [Index I4 = 0], [Title BSTR = ""]) BSTR
  9 Timeout I4 get put
  10 TimeoutAccepts BOOL get put
  11 ShowCountdown BOOL get put
  12 CancelText BSTR get put
  13 Outcome I2 get
_Profile
  1 ErrorLevel I2 get put
  2 File BSTR get put
  3 GetValue(section BSTR, key BSTR) BSTR
  4 GetSection(section BSTR, [cvt BOOL = True]) BSTR
  5 GetSectionNames([cvt BOOL = True]) BSTR
  6 SetValue(section BSTR, key BSTR, entry BSTR) BOOL
  7 SetSection(section BSTR, entries BSTR, [cvt BOOL = True]) BOOL
_EventLog
  1 ErrorLevel I2 get put
  2 File BSTR get put
  3 mode I2 get put
  4 Report(estring BSTR, [etype I4 = 0])
_Clipboard
  1 Text BSTR get put
  2 UseUnicode BOOL get put
_System
  1 UserName BSTR get
  2 ComputerName([f ComputerNameFormat = 0]) BSTR
  3 NetworkName BSTR get
  4 NetworkType I4 get
  5 ProcessorArchitecture I4 get
  6 ProcessorInfo I4 get
  7 GetMetrics(n I4) I4
  8 VolumeGetSN(drv BSTR) I4
  9 VolumeGetName(drv BSTR) BSTR
  10 VolumeGetFileSys(drv BSTR) BSTR
  11 VolumeGetGUID(drv BSTR) BSTR
  12 CurrentCodePage I4 get
  13 BiosMode([fAlt I2 = 0]) I2
_OsVersion
  1 Number I2 get
  2 Major I4 get
  3 Minor I4 get
  4 Build I4 get
  5 SPMajor I4 get
  6 SPMinor I4 get
  7 Suite I2 get
  8 Product I2 get
  9 Product2 I4 get
  10 Bitness I2 get
_Noise
  1 Ring([freq I4 = 1024], [dura I4 = 500])
  2 MsgBeep([mtype I4 = 0])
  3 Play(sound BSTR, [hmod I4 = 0], [flags I4 = 0])
  4 PlayFile(sound BSTR, [flags I4 = 0])
  5 PlayEvent(sound BSTR, [flags I4 = 0])
_CheckList
  1 ButtonText BSTR get put
  2 DlgCancelEsc BOOL get put
  3 FontEnlarge I2 get put
  4 FontModernize BOOL get put
  5 Info BSTR get put
  6 Topmost BOOL get put
  7 Selection(items BSTR, [Index I4 = 0], [Title BSTR = ""]) I4
  8 SelectionA(items VARIANT*, [indices VARIANT*], [Title BSTR = ""]) I4
  9 Timeout I4 get put
  10 TimeoutAccepts BOOL get put
  11 ShowCountdown BOOL get put
  12 CancelText BSTR get put
  13 Outcome I2 get
_File
  1 Application(filespec BSTR) BSTR
  2 Create(filespec BSTR, [overwrite BOOL = False]) BOOL
  3 ExeType(filespec BSTR) I4
  4 ExeType2(filespec BSTR) I4
  5 ExeType3(filespec BSTR, [winversion BOOL = False]) I2
  6 Exists(filespec BSTR) BOOL
  7 Replace(filespec BSTR, replacementfile BSTR, [backupfile BSTR = ""]) BOOL
  8 OpenBinary(filespec BSTR, [write_access BOOL = True]) _BinFile*
  9 TimeSet(File BSTR, dt DATE, [which I2 = 2]) BOOL
  10 TimeGet(File BSTR, [which I2 = 2]) DATE
  11 TimeCompare(file1 BSTR, file2 BSTR, [which I2 = 2]) I2
_FileSelection
  1 Directory BSTR get put
  2 DlgTitle BSTR get put
  3 FileName BSTR get put
  4 FileExtension BSTR get put
  5 Filter BSTR get put
  6 FileNumber I4 get put
  7 Convert BOOL get put
  8 ErrorLevel I2 get put
  9 ErrorCode I4 get
  10 Dialog(mode I2) I4
  11 SetFilter(f VARIANT*)
  12 Timeout I4 get put
  13 Outcome I2 get
  14 SelectFolder([Title BSTR = ""]) BSTR
  15 Paths VARIANT get
  16 FilterIndex I4 get put
_Aux
  1 Hex64(amount CY) BSTR
  2 FormatByteSize(bytes CY) BSTR
  3 TextToBytes(chars BSTR, [codepage I4 = 65001]) VARIANT
  4 BytesToText(data VARIANT*, [codepage I4 = 65001]) BSTR
  5 EncodeHex(data VARIANT*) BSTR
  6 DecodeHex(chars BSTR) VARIANT
  7 EncodeBase64(data VARIANT*) BSTR
  8 DecodeBase64(chars BSTR) VARIANT
  9 Hash(data VARIANT*, [algorithm BSTR = "SHA256"]) BSTR
  10 HashFile(filespec BSTR, [algorithm BSTR = "SHA256"]) BSTR
  11 VariantArray(items VARIANT*) VARIANT
  12 TypedArray(items VARIANT*, vartype I4) VARIANT
  13 Sort(items VARIANT*, [numeric BOOL = False], [descending BOOL = False]) VARIANT
  14 Unique(items VARIANT*, [ignorecase BOOL = False]) VARIANT
  15 Find(items VARIANT*, value VARIANT*, [start I4 = 0], [ignorecase BOOL = False]) I4
  16 Join(items VARIANT*, separator BSTR) BSTR
  17 Split(chars BSTR, separator BSTR) VARIANT
  18 EncodeUrl(chars BSTR, [plus BOOL = False]) BSTR
  19 DecodeUrl(chars BSTR, [plus BOOL = False]) BSTR
  20 SplitUrl(url BSTR) VARIANT
  21 CombineUrl(base BSTR, relative BSTR) BSTR
  22 PathToUrl(filespec BSTR) BSTR
  23 UrlToPath(url BSTR) BSTR
  24 CombinePath(folder BSTR, name BSTR) BSTR
  25 FullPath(filespec BSTR, folder BSTR) BSTR
  26 RelativePath(filespec BSTR, folder BSTR) BSTR
  27 CompactPath(filespec BSTR, width I4) BSTR
  28 LongPath(filespec BSTR) BSTR
  29 ShortPath(filespec BSTR) BSTR
  30 MatchName(name BSTR, pattern BSTR) BOOL
  31 ExpandEnvironment(chars BSTR) BSTR
  32 SplitCommandLine(commandline BSTR) VARIANT
_DateTime
  1 ConvertTime(dt DATE, IsUTC BOOL) DATE
  2 TimeInfoRefresh()
  3 TimeZoneType I4 get
  4 TimeZoneName BSTR get
  5 TimeBias I4 get
  6 TimeBiasDST I4 get
  7 SysDate DATE get
  8 SysTime DATE get
  9 SysNow DATE get
_DTPick
  1 ButtonText BSTR get put
  2 ControlMode I2 get put
  3 Info BSTR get put
  4 Title BSTR get put
  5 Topmost BOOL get put
  6 Selection(out vdt VARIANT*) BOOL
  7 Timeout I4 get put
  8 TimeoutAccepts BOOL get put
  9 ShowCountdown BOOL get put
  10 CancelText BSTR get put
  11 Outcome I2 get
_Registry
  1 Access64 I4 get put
  2 Continue I4 get put
  3 ConvertArr BOOL get put
  4 ConvertStr BOOL get put
  5 ErrorCode I4 get
  6 ItemType I4 get put
  7 KeyLevels I4 get put
  8 GetItems(sPath BSTR, out vItems VARIANT*) I4
  9 Search(sItem BSTR, sPath BSTR) BSTR
  10 RegRead(sItem BSTR, [sVal BSTR = ""]) VARIANT
  11 RegRead1(sItem BSTR, [sVal BSTR = ""]) VARIANT
  12 RegEntryExists(sItem BSTR) I4
  13 RegEntryExists1(sItem BSTR) I4
_MessageBox
  1 Buttons I4 get put
  2 DefButton I4 get put
  3 Icon I4 get put
  4 IconResFile BSTR get put
  5 IconResID BSTR get put
  6 Language I4 get put
  7 Options I4 get put
  8 Precedence BOOL get put
  9 Text BSTR get put
  10 Title BSTR get put
  11 Show([msg BSTR = ""], [style I4 = -1], [Title BSTR = ""]) I2
  12 Timeout I4 get put
  13 Outcome I2 get
_TaskDialog
  1 Buttons I4 get put
  2 ErrorCode I4 get
  3 Icon I4 get put
  4 IconResFile BSTR get put
  5 IconResID BSTR get put
  6 Text BSTR get put
  7 SubText BSTR get put
  8 Title BSTR get put
  9 CustomButtons VARIANT get put
  10 CustomButtonStyle I4 get put
  11 DefaultButton I4 get put
  12 ExpandText BSTR get put
  13 ExpandLabelCo BSTR get put
  14 ExpandLabelEx BSTR get put
  15 FooterIcon I4 get put
  16 FooterIconResID BSTR get put
  17 FooterText BSTR get put
  18 Options I4 get put
  19 RadioButtons VARIANT get put
  20 RadioButtonSelected I4 get put
  21 VerificationLabel BSTR get put
  22 VerificationChecked BOOL get put
  23 Show([prompt BSTR = ""], [Buttons I4 = -1], [Title BSTR = ""]) I2
  24 ShowEx() I2
  25 Timeout I4 get put
  26 Outcome I2 get
_ProgressWindow
  1 Create([tt BSTR = ""], [wd I2 = 0], [fx I2 = 0])
  2 Remove()
  3 Flash([num I4 = 3])
  4 ProgressAdd(padd I2)
  5 ProgressStep()
  6 SetProgressRange(pmin I2, pmax I2) BOOL
  7 SetProgressStep(i I2)
  8 TB_SetProgressState(hWnd I4, tbpFlag I4)
  9 TB_SetProgressValue(hWnd I4, ullCompleted CY, ullTotal CY)
  10 ProgressStyle I4 get put
  11 Progress I2 get put
  12 ProgressMarquee BOOL get put
  13 ProgressMarqueeTime I2 get put
  14 ProgressState I2 get put
  15 ProgressColor I4 get put
  16 ProgressBackColor I4 get put
  17 Button I2 get put
  18 BtnNotifier I2 get put
  19 BtnPressed I2 get put
  20 ButtonText BSTR get put
  21 ButtonLabel BSTR get put
  22 MainText BSTR get put
  23 Text BSTR get put
  24 MainTextColor I4 get put
  25 SubText BSTR get put
  26 Title BSTR get put
  27 Topmost BOOL get put
  28 ErrorLevel I2 get put
  29 TBProgress I2 get put
  30 TBProState I2 get put
  31 TBProValue I2 get put
  32 TBProTotal I2 get put
  33 WaitButton([milliseconds I4 = -1]) BOOL
_MInputBox
  1 InputNumber I2 get put
  2 InputStart I2 get put
  3 TextLimit I2 get put
  4 LabelEditRatio I2 get put
  5 AlignInput I2 get put
  6 AlignLabel I2 get put
  7 ShowTipControl I2 get put
  8 InputFlags I2 get put
  9 CheckNumStyle BOOL get put
  10 ConvertArr BOOL get put
  11 InputSelection BOOL get put
  12 ShowCueAtFocus BOOL get put
  13 AccPrefix BOOL get put
  14 PasswordChar BSTR get put
  15 MinBalloonText BSTR get put
  16 MinBalloonTitle BSTR get put
  17 Title BSTR get put
  18 Info BSTR get put
  19 InfoBig BOOL get put
  20 ButtonText BSTR get put
  21 Topmost BOOL get put
  22 FontModernize BOOL get put
  23 FontEnlarge I2 get put
  24 DlgCancelEsc BOOL get put
  25 DlgCancelTime I2 get put
  26 InpLabel VARIANT get put
  27 InpText VARIANT get put
  28 InpCueText VARIANT get put
  29 InpTipText VARIANT get put
  30 InpTextStyle VARIANT get put
  31 InpMaxLen VARIANT get put
  32 InpMinLen VARIANT get put
  33 InpLocked VARIANT get put
  34 InpLabelColor VARIANT get put
  35 InpTextColor VARIANT get put
  36 InputS([prompt BSTR = ""], [Title BSTR = ""], [default BSTR = ""]) BSTR
  37 InputM(out vinp VARIANT*) BOOL
  38 Timeout I4 get put
  39 TimeoutAccepts BOOL get put
  40 ShowCountdown BOOL get put
  41 CancelText BSTR get put
  42 Outcome I2 get
_Notice
  1 Add() BOOL
  2 ChangeIcon() BOOL
  3 Remove()
  4 ShowBalloon() BOOL
  5 ErrorCode I4 get
  6 TipText BSTR get put
  7 BalloonText BSTR get put
  8 BalloonTitle BSTR get put
  9 BalloonOptions I4 get put
  10 BalloonIcon I2 get put
  11 BIconID I4 get put
  12 BIconName BSTR get put
  13 BIconFile BSTR get put
  14 BIconSize I2 get put
  15 IconID I4 get put
  16 IconName BSTR get put
  17 IconFile BSTR get put
  18 IconSize I2 get put
  19 UseLoadImageAPI BOOL get put
  20 TriggerEvent BOOL get put
  21 BalloonClicked BOOL get put
  22 TrayClicked I2 get put
  23 ContextMenu VARIANT get put
  24 ContextMenuItems I2 get
  25 AutoRestore BOOL get put
  26 WaitClick([milliseconds I4 = -1]) I2
_Clock
  1 SetTimer(milliseconds I4) BOOL
  2 RemoveTimer()
  3 Running BOOL get
  4 Wait([Timeout I4 = -1]) BOOL
_ProgressDialog
  1 StartDlg([flags I4 = 0])
  2 StopDlg()
  3 SetProgress(dwCompleted I4, dwTotal I4)
  4 SetProgress64(dwCompleted CY, dwTotal CY)
  5 SetText(txt BSTR, [line I2 = 1], [cp BOOL = True])
  6 SetTimer([action I4 = 1])
  7 Cancellation BOOL get
  8 CancelMsg BSTR get put
  9 Title BSTR get put
__ProgressWindow
  1 ButtonPressed()
__Notice
  1 TrayClick(tctype I2)
  2 BalloonClick()
__Clock
  1 Buzz()
)";

constexpr char kEnumerations[] = R"(
NetworkStatus NetSetupUnknownStatus=0 NetSetupUnjoined=1 NetSetupWorkgroupName=2 NetSetupDomainName=3
ComputerNameFormat ComputerNameNetBIOS=0 ComputerNameDnsHostname=1 ComputerNameDnsDomain=2 ComputerNameDnsFullyQualified=3 ComputerNamePhysicalNetBIOS=4 ComputerNamePhysicalDnsHostname=5 ComputerNamePhysicalDnsDomain=6 ComputerNamePhysicalDnsFullyQualified=7
)";

// Published classes that scripts get from other objects only.
const std::set<std::wstring> kNotCreatable{L"BinFile"};

std::string Text(BSTR text)
{
    const Bstr owned(text);
    return text ? Narrow(text) : std::string();
}

std::string NameOf(ITypeInfo* info)
{
    BSTR name = nullptr;
    Check(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    return Text(name);
}

std::string HelpOf(ITypeInfo* info, MEMBERID member)
{
    BSTR help = nullptr;
    Check(info->GetDocumentation(member, nullptr, &help, nullptr, nullptr));
    return Text(help);
}

std::string TypeName(ITypeInfo* info, const TYPEDESC& type)
{
    static const std::map<VARTYPE, std::string> names{
        {VT_I2, "I2"},           {VT_I4, "I4"},     {VT_UI1, "UI1"},
        {VT_R4, "R4"},           {VT_R8, "R8"},     {VT_CY, "CY"},
        {VT_DATE, "DATE"},       {VT_BSTR, "BSTR"}, {VT_BOOL, "BOOL"},
        {VT_VARIANT, "VARIANT"}, {VT_VOID, ""},     {VT_DISPATCH, "DISPATCH"},
        {VT_UNKNOWN, "UNKNOWN"}};
    if (type.vt == VT_PTR) return TypeName(info, *type.lptdesc) + '*';
    if (type.vt == VT_USERDEFINED) {
        ComPtr<ITypeInfo> referred;
        Check(info->GetRefTypeInfo(type.hreftype, &referred));
        return NameOf(referred.Get());
    }
    const auto found = names.find(type.vt);
    return found == names.end() ? "VT_" + std::to_string(type.vt) : found->second;
}

std::string DefaultText(const VARIANT& value)
{
    if (V_VT(&value) == VT_BSTR)
        return V_BSTR(&value) ? '"' + Narrow(V_BSTR(&value)) + '"' : "\"\"";
    Variant text;
    Check(VariantChangeType(&text, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR));
    return Narrow(V_BSTR(&text));
}

// "(section BSTR, [cvt BOOL = True])"; nothing for a property without arguments.
std::string Parameters(ITypeInfo* info, const FUNCDESC& function)
{
    BSTR names[16]{};
    UINT count = 0;
    Check(info->GetNames(function.memid, names, 16, &count));
    std::string text;
    for (SHORT index = 0; index < function.cParams; ++index) {
        const ELEMDESC& parameter = function.lprgelemdescParam[index];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        const bool optional = flags & PARAMFLAG_FOPT;
        const auto name = static_cast<UINT>(index) + 1;
        if (name >= count) break; // the value of a put has no name
        if (!text.empty()) text += ", ";
        if (optional) text += '[';
        if (flags & PARAMFLAG_FOUT) text += "out ";
        text += Narrow(names[name]) + ' ' + TypeName(info, parameter.tdesc);
        if (flags & PARAMFLAG_FHASDEFAULT)
            text += " = " + DefaultText(parameter.paramdesc.pparamdescex->varDefaultValue);
        if (optional) text += ']';
    }
    for (BSTR name : names)
        SysFreeString(name);
    return text.empty() && function.invkind != INVOKE_FUNC ? text : '(' + text + ')';
}

// Calls `visit` with all functions of a dispatch interface that are its own.
template <class Visit>
void ForEachFunction(ITypeInfo* info, Visit visit)
{
    TYPEATTR* attributes = nullptr;
    Check(info->GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    info->ReleaseTypeAttr(attributes);
    for (UINT index = 0; index < count; ++index) {
        FUNCDESC* function = nullptr;
        Check(info->GetFuncDesc(index, &function));
        if (!(function->wFuncFlags & FUNCFLAG_FRESTRICTED)) visit(*function);
        info->ReleaseFuncDesc(function);
    }
}

std::string Describe(ITypeInfo* info)
{
    std::string lines = NameOf(info) + '\n';
    MEMBERID last = MEMBERID_NIL;
    ForEachFunction(info, [&](const FUNCDESC& function) {
        const char* access = function.invkind == INVOKE_PROPERTYGET ? " get" : " put";
        if (function.memid == last && function.invkind != INVOKE_FUNC) {
            lines.insert(lines.size() - 1, access);
            return;
        }
        last = function.memid;
        BSTR name = nullptr;
        UINT count = 0;
        Check(info->GetNames(function.memid, &name, 1, &count));
        const std::string type = TypeName(info, function.elemdescFunc.tdesc);
        lines += "  " + std::to_string(function.memid) + ' ' + Text(name) +
                 Parameters(info, function) + (type.empty() ? "" : ' ' + type) +
                 (function.invkind == INVOKE_FUNC ? "" : access) + '\n';
    });
    return lines;
}

// Calls `visit` with the type informations of one kind.
template <class Visit>
void ForEachType(TYPEKIND wanted, Visit visit)
{
    ITypeLib* library = TypeLibrary();
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        TYPEKIND kind;
        ComPtr<ITypeInfo> info;
        TYPEATTR* attributes = nullptr;
        Check(library->GetTypeInfoType(index, &kind));
        if (kind != wanted) continue;
        Check(library->GetTypeInfo(index, &info));
        Check(info->GetTypeAttr(&attributes));
        const TYPEATTR copy = *attributes;
        info->ReleaseTypeAttr(attributes);
        visit(info.Get(), copy);
    }
}

TEST(Contract, MembersAreAsPublished)
{
    std::string published = "\n";
    ForEachType(TKIND_DISPATCH,
                [&](ITypeInfo* info, const TYPEATTR&) { published += Describe(info); });
    EXPECT_EQ(published, kContract);

    published = "\n";
    ForEachType(TKIND_ENUM, [&](ITypeInfo* info, const TYPEATTR& attributes) {
        published += NameOf(info);
        for (UINT index = 0; index < attributes.cVars; ++index) {
            VARDESC* constant = nullptr;
            BSTR name = nullptr;
            UINT count = 0;
            Check(info->GetVarDesc(index, &constant));
            Check(info->GetNames(constant->memid, &name, 1, &count));
            published += ' ' + Text(name) + '=' + DefaultText(*constant->lpvarValue);
            info->ReleaseVarDesc(constant);
        }
        published += '\n';
    });
    EXPECT_EQ(published, kEnumerations);
}

TEST(Contract, EverythingIsExplained)
{
    ForEachType(TKIND_COCLASS, [](ITypeInfo* info, const TYPEATTR&) {
        EXPECT_NE(HelpOf(info, MEMBERID_NIL), "") << NameOf(info);
    });
    ForEachType(TKIND_DISPATCH, [](ITypeInfo* info, const TYPEATTR&) {
        EXPECT_NE(HelpOf(info, MEMBERID_NIL), "") << NameOf(info);
        ForEachFunction(info, [&](const FUNCDESC& function) {
            EXPECT_NE(HelpOf(info, function.memid), "") << NameOf(info) << ' ' << function.memid;
        });
    });
    BSTR file = nullptr;
    Check(TypeLibrary()->GetDocumentation(-1, nullptr, nullptr, nullptr, &file));
    EXPECT_TRUE(Text(file).ends_with("quill.chm"));
}

// A compiler that saw the interfaces in the wrong order gives them a wrong base without a word.
TEST(Contract, InterfacesAreDualAndDeriveFromDispatch)
{
    ForEachType(TKIND_DISPATCH, [](ITypeInfo* info, const TYPEATTR& attributes) {
        const std::string name = NameOf(info);
        if (name.starts_with("__")) return; // events are no dual interfaces
        EXPECT_TRUE(attributes.wTypeFlags & TYPEFLAG_FDUAL) << name;
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> early;
        ComPtr<ITypeInfo> parent;
        ASSERT_HRESULT_SUCCEEDED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
        ASSERT_HRESULT_SUCCEEDED(info->GetRefTypeInfo(reference, &early));
        ASSERT_HRESULT_SUCCEEDED(early->GetRefTypeOfImplType(0, &reference));
        ASSERT_HRESULT_SUCCEEDED(early->GetRefTypeInfo(reference, &parent));
        EXPECT_EQ(NameOf(parent.Get()), "IDispatch") << name;
    });
}

TEST(Contract, CatalogueAndTypeLibraryAgree)
{
    std::map<std::string, CLSID> published;
    ForEachType(TKIND_COCLASS, [&](ITypeInfo* info, const TYPEATTR& attributes) {
        const std::string name = NameOf(info);
        if (kNotCreatable.contains(std::wstring(name.begin(), name.end())))
            EXPECT_FALSE(attributes.wTypeFlags & TYPEFLAG_FCANCREATE) << name;
        else
            published[name] = attributes.guid;
    });
    std::map<std::string, CLSID> catalogued;
    for (const CatalogueRow& row : kCatalogue) {
        const std::string name = Narrow(row.name);
        EXPECT_TRUE(catalogued.emplace(name, row.id).second) << name << " stands there twice";
        EXPECT_TRUE(published.contains(name) && published[name] == row.id) << name;
    }
    EXPECT_EQ(catalogued.size(), published.size());
}

// What a class offers whatever its job: made once each, through its factory.
TEST(Contract, EveryClassTellsWhatItIs)
{
    for (const CatalogueRow& row : kCatalogue) {
        SCOPED_TRACE(Narrow(row.name));
        ComPtr<IDispatch> object;
        ComPtr<IProvideClassInfo2> provider;
        ComPtr<ITypeInfo> info;
        ComPtr<IUnknown> identity;
        ComPtr<IUnknown> sameIdentity;
        ASSERT_HRESULT_SUCCEEDED(CreateHere(row, IID_PPV_ARGS(&object)));
        ASSERT_HRESULT_SUCCEEDED(object.As(&provider));
        ASSERT_HRESULT_SUCCEEDED(provider->GetClassInfo(&info));
        EXPECT_EQ(NameOf(info.Get()), Narrow(row.name));
        ASSERT_HRESULT_SUCCEEDED(
            object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.ReleaseAndGetAddressOf()));
        EXPECT_EQ(NameOf(info.Get()), '_' + Narrow(row.name));
        object.As(&identity);
        provider.As(&sameIdentity);
        EXPECT_EQ(identity.Get(), sameIdentity.Get());
    }
}

} // namespace
} // namespace quill::test
