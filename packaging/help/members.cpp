// members LIBRARY: prints what a type library publishes, one thing a line, fields separated by
// tabs:
//
//     class     List     0     Lets the user choose one or several lines   {…}
//     method    List     Selection    0    Shows the dialog ...
//     property  List     Topmost      0    ...
//     event     Clock    Buzz         0    ...
//
// The number is the help context, 0 where there is none. A property stands once. A class that
// clients can create ends with its identifier.
#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

void Check(HRESULT result, const char* what)
{
    if (SUCCEEDED(result)) return;
    std::fprintf(stderr, "members: %s: 0x%08lx\n", what, static_cast<unsigned long>(result));
    ExitProcess(1);
}

std::string Take(BSTR text)
{
    std::string bytes(3 * static_cast<size_t>(SysStringLen(text)), '\0');
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(SysStringLen(text)), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<size_t>(length));
    SysFreeString(text);
    return bytes;
}

struct Documentation {
    std::string name;
    std::string help;
    DWORD context = 0;

    Documentation(ITypeInfo* info, MEMBERID member)
    {
        BSTR nameText = nullptr;
        BSTR helpText = nullptr;
        Check(info->GetDocumentation(member, &nameText, &helpText, &context, nullptr),
              "GetDocumentation");
        name = Take(nameText);
        help = Take(helpText);
    }
};

void PrintMembers(ITypeInfo* interfaceInfo, const std::string& className, bool events)
{
    TYPEATTR* attributes = nullptr;
    Check(interfaceInfo->GetTypeAttr(&attributes), "GetTypeAttr");
    std::set<MEMBERID> printed;
    for (UINT index = 0; index < attributes->cFuncs; ++index) {
        FUNCDESC* function = nullptr;
        Check(interfaceInfo->GetFuncDesc(index, &function), "GetFuncDesc");
        const MEMBERID id = function->memid;
        const bool method = function->invkind == INVOKE_FUNC;
        const bool inherited = (function->wFuncFlags & FUNCFLAG_FRESTRICTED) != 0;
        interfaceInfo->ReleaseFuncDesc(function);
        if (inherited || !printed.insert(id).second) continue;
        const Documentation member(interfaceInfo, id);
        std::printf("%s\t%s\t%s\t%lu\t%s\n",
                    events   ? "event"
                    : method ? "method"
                             : "property",
                    className.c_str(), member.name.c_str(), member.context, member.help.c_str());
    }
    interfaceInfo->ReleaseTypeAttr(attributes);
}

void PrintClass(ITypeInfo* info, const TYPEATTR& attributes)
{
    const Documentation documentation(info, MEMBERID_NIL);
    wchar_t id[39] = L"";
    if (attributes.wTypeFlags & TYPEFLAG_FCANCREATE) StringFromGUID2(attributes.guid, id, 39);
    std::printf("class\t%s\t%lu\t%s\t%ls\n", documentation.name.c_str(), documentation.context,
                documentation.help.c_str(), id);
    for (UINT index = 0; index < attributes.cImplTypes; ++index) {
        int flags = 0;
        HREFTYPE reference = 0;
        ITypeInfo* interfaceInfo = nullptr;
        Check(info->GetImplTypeFlags(index, &flags), "GetImplTypeFlags");
        Check(info->GetRefTypeOfImplType(index, &reference), "GetRefTypeOfImplType");
        Check(info->GetRefTypeInfo(reference, &interfaceInfo), "GetRefTypeInfo");
        PrintMembers(interfaceInfo, documentation.name, (flags & IMPLTYPEFLAG_FSOURCE) != 0);
        interfaceInfo->Release();
    }
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count != 2) return 2;
    ITypeLib* library = nullptr;
    Check(LoadTypeLibEx(arguments[1], REGKIND_NONE, &library), "LoadTypeLibEx");
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        ITypeInfo* info = nullptr;
        TYPEATTR* attributes = nullptr;
        Check(library->GetTypeInfo(index, &info), "GetTypeInfo");
        Check(info->GetTypeAttr(&attributes), "GetTypeAttr");
        if (attributes->typekind == TKIND_COCLASS) PrintClass(info, *attributes);
        info->ReleaseTypeAttr(attributes);
        info->Release();
    }
    library->Release();
    return 0;
}
