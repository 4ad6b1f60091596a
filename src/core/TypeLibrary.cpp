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

const PublishedClass& FindPublishedClass(const IID& interfaceId)
{
    static const std::list<Entry> classes = ReadClasses();
    for (const Entry& entry : classes)
        if (entry.interfaceId == interfaceId) return entry.published;
    throw AutomationError{TYPE_E_ELEMENTNOTFOUND, {}, {}};
}

} // namespace quill
