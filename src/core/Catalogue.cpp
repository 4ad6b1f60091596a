#include "core/Catalogue.h"

#include <iterator>

#include "core/AutomationError.h"

namespace quill {

namespace {

const CatalogueRow kRows[] = {
    {CLSID_Window, L"Window", Home::Pool, Create<::Window>},
    {CLSID_Window2, L"Window2", Home::Pool, Create<::Window2>},
    {CLSID_Me, L"Me", Home::Main, Create<::Me>},
    {CLSID_DriveList, L"DriveList", Home::Pool, Create<::DriveList>},
    {CLSID_List, L"List", Home::Pool, Create<::List>},
    {CLSID_Profile, L"Profile", Home::Pool, Create<::Profile>},
    {CLSID_EventLog, L"EventLog", Home::Pool, Create<::EventLog>},
    {CLSID_Clipboard, L"Clipboard", Home::Pool, Create<::Clipboard>},
    {CLSID_System, L"System", Home::Pool, Create<::System>},
    {CLSID_OsVersion, L"OsVersion", Home::Main, Create<::OsVersion>},
    {CLSID_Noise, L"Noise", Home::Pool, Create<::Noise>},
    {CLSID_CheckList, L"CheckList", Home::Pool, Create<::CheckList>},
    {CLSID_File, L"File", Home::Pool, Create<::File>},
    {CLSID_FileSelection, L"FileSelection", Home::Pool, Create<::FileSelection>},
    {CLSID_Aux, L"Aux", Home::Pool, Create<::Aux>},
    {CLSID_DateTime, L"DateTime", Home::Main, Create<::DateTime>},
    {CLSID_DTPick, L"DTPick", Home::Pool, Create<::DTPick>},
    {CLSID_Registry, L"Registry", Home::Pool, Create<::Registry>},
    {CLSID_MessageBox, L"MessageBox", Home::Pool, Create<::MessageBox>},
    {CLSID_TaskDialog, L"TaskDialog", Home::Pool, Create<::TaskDialog>},
    {CLSID_ProgressWindow, L"ProgressWindow", Home::Pool, Create<::ProgressWindow>},
    {CLSID_MInputBox, L"MInputBox", Home::Pool, Create<::MInputBox>},
    {CLSID_Notice, L"Notice", Home::Pool, Create<::Notice>},
    {CLSID_Clock, L"Clock", Home::Pool, Create<::Clock>},
    {CLSID_ProgressDialog, L"ProgressDialog", Home::Pool, Create<::ProgressDialog>},
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
