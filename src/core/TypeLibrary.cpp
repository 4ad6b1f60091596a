#include "core/TypeLibrary.h"

#include <list>

#include "core/AutomationError.h"

namespace quill {

namespace {

struct Entry {
    IID interfaceId;
    PublishedClass published;
};

IID IdentifierOf(ITypeInfo* info)
{
    TYPEATTR* attributes = nullptr;
    Check(info->GetTypeAttr(&attributes));
    const IID id = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    return id;
}

Entry ReadClass(ComPtr<ITypeInfo> classInfo)
{
    Entry entry{};
    TYPEATTR* attributes = nullptr;
    Check(classInfo->GetTypeAttr(&attributes));
    const WORD count = attributes->cImplTypes;
    classInfo->ReleaseTypeAttr(attributes);

    for (UINT index = 0; index < count; ++index) {
        int flags = 0;
        HREFTYPE reference = 0;
        ComPtr<ITypeInfo> implemented;
        Check(classInfo->GetImplTypeFlags(index, &flags));
        Check(classInfo->GetRefTypeOfImplType(index, &reference));
        Check(classInfo->GetRefTypeInfo(reference, &implemented));
        if (flags & IMPLTYPEFLAG_FSOURCE) {
            entry.published.eventsId = IdentifierOf(implemented.Get());
        } else if (flags & IMPLTYPEFLAG_FDEFAULT) {
            entry.interfaceId = IdentifierOf(implemented.Get());
            entry.published.interfaceInfo = implemented;
        }
    }
    BSTR name = nullptr;
    Check(classInfo->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    entry.published.source = std::wstring(L"Quill.") + Bstr(name).get();
    entry.published.classInfo = std::move(classInfo);
    return entry;
}

std::list<Entry> ReadClasses()
{
    std::list<Entry> classes;
    ITypeLib* library = TypeLibrary();
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        TYPEKIND kind;
        ComPtr<ITypeInfo> info;
        Check(library->GetTypeInfoType(index, &kind));
        if (kind != TKIND_COCLASS) continue;
        Check(library->GetTypeInfo(index, &info));
        classes.push_back(ReadClass(info));
    }
    return classes;
}

const std::list<Entry>& Classes()
{
    static const std::list<Entry> classes = ReadClasses();
    return classes;
}

// True for a member of the type's own, not one of IUnknown or IDispatch.
bool HasMember(ITypeInfo* info, std::wstring name)
{
    constexpr MEMBERID kFirstInherited = 0x60000000;
    wchar_t* names = name.data();
    MEMBERID id = MEMBERID_NIL;
    return SUCCEEDED(info->GetIDsOfNames(&names, 1, &id)) && id < kFirstInherited;
}

} // namespace

ITypeLib* TypeLibrary()
{
    static const ComPtr<ITypeLib> library = [] {
        std::wstring path(4096, L'\0');
        path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
        ComPtr<ITypeLib> loaded;
        Check(LoadTypeLibEx(path.c_str(), REGKIND_NONE, &loaded));
        return loaded;
    }();
    return library.Get();
}

bool IsPublished(const std::wstring& name)
{
    constexpr std::wstring_view kLibrary = L"Quill.";
    if (name.find(L'\0') != std::wstring::npos) return false;
    const bool qualified = _wcsnicmp(name.c_str(), kLibrary.data(), kLibrary.size()) == 0;
    const std::wstring path = qualified ? name.substr(kLibrary.size()) : name;
    const size_t point = path.find(L'.');
    const std::wstring source = std::wstring(kLibrary) + path.substr(0, point);
    for (const Entry& entry : Classes()) {
        const PublishedClass& published = entry.published;
        if (_wcsicmp(published.source.c_str(), source.c_str()) != 0) continue;
        if (point == std::wstring::npos) return true;
        const std::wstring member = path.substr(point + 1);
        ComPtr<ITypeInfo> events;
        return HasMember(published.interfaceInfo.Get(), member) ||
               (SUCCEEDED(TypeLibrary()->GetTypeInfoOfGuid(published.eventsId, &events)) &&
                HasMember(events.Get(), member));
    }
    return false;
}

const PublishedClass& FindPublishedClass(const IID& interfaceId)
{
    for (const Entry& entry : Classes())
        if (entry.interfaceId == interfaceId) return entry.published;
    throw AutomationError{TYPE_E_ELEMENTNOTFOUND, {}, {}};
}

} // namespace quill
