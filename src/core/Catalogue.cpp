#include "core/Catalogue.h"

#include <iterator>

#include "core/AutomationError.h"

namespace quill {

namespace {

const CatalogueRow kRows[] = {
    {CLSID_Window, L"Window", Placement::Own, Create<::Window>},
    {CLSID_Window2, L"Window2", Placement::Own, Create<::Window2>},
    {CLSID_Me, L"Me", Placement::Shared, Create<::Me>},
    {CLSID_DriveList, L"DriveList", Placement::Own, Create<::DriveList>},
    {CLSID_List, L"List", Placement::Own, Create<::List>},
    {CLSID_Profile, L"Profile", Placement::Own, Create<::Profile>},
    {CLSID_EventLog, L"EventLog", Placement::Own, Create<::EventLog>},
    {CLSID_Clipboard, L"Clipboard", Placement::Own, Create<::Clipboard>},
    {CLSID_System, L"System", Placement::Own, Create<::System>},
    {CLSID_OsVersion, L"OsVersion", Placement::Shared, Create<::OsVersion>},
    {CLSID_Noise, L"Noise", Placement::Own, Create<::Noise>},
    {CLSID_CheckList, L"CheckList", Placement::Own, Create<::CheckList>},
    {CLSID_File, L"File", Placement::Own, Create<::File>},
    {CLSID_FileSelection, L"FileSelection", Placement::Own, Create<::FileSelection>},
    {CLSID_Aux, L"Aux", Placement::Own, Create<::Aux>},
    {CLSID_DateTime, L"DateTime", Placement::Shared, Create<::DateTime>},
    {CLSID_DTPick, L"DTPick", Placement::Own, Create<::DTPick>},
    {CLSID_Registry, L"Registry", Placement::Own, Create<::Registry>},
    {CLSID_MessageBox, L"MessageBox", Placement::Own, Create<::MessageBox>},
    {CLSID_TaskDialog, L"TaskDialog", Placement::Own, Create<::TaskDialog>},
    {CLSID_ProgressWindow, L"ProgressWindow", Placement::Own, Create<::ProgressWindow>},
    {CLSID_MInputBox, L"MInputBox", Placement::Own, Create<::MInputBox>},
    {CLSID_Notice, L"Notice", Placement::Own, Create<::Notice>},
    {CLSID_Clock, L"Clock", Placement::Own, Create<::Clock>},
    {CLSID_ProgressDialog, L"ProgressDialog", Placement::Own, Create<::ProgressDialog>},
};

} // namespace

const CatalogueRow* Catalogue::begin() const noexcept
{
    return std::begin(kRows);
}

const CatalogueRow* Catalogue::end() const noexcept
{
    return std::end(kRows);
}

HRESULT CreateHere(const CatalogueRow& row, REFIID id, void** object) noexcept
{
    try {
        return ComPtr<IDispatch>(row.create())->QueryInterface(id, object);
    } catch (...) {
        return ReportException(IID_IClassFactory, std::wstring());
    }
}

} // namespace quill
