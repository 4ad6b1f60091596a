#include <gtest/gtest.h>

#include "core/Catalogue.h"
#include "core/TypeLibrary.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

std::wstring NameOf(ITypeInfo* info)
{
    BSTR name = nullptr;
    Check(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    return Taken(name);
}

TEST(Catalogue, EveryClassSaysWhichItIs)
{
    for (const CatalogueRow& row : kCatalogue) {
        SCOPED_TRACE(Narrow(row.name));
        ComPtr<IDispatch> object;
        ComPtr<IProvideClassInfo> provider;
        ComPtr<ITypeInfo> info;
        TYPEATTR* type = nullptr;
        ASSERT_HRESULT_SUCCEEDED(CreateHere(row, IID_PPV_ARGS(&object)));
        ASSERT_HRESULT_SUCCEEDED(object.As(&provider));
        ASSERT_HRESULT_SUCCEEDED(provider->GetClassInfo(&info));
        ASSERT_HRESULT_SUCCEEDED(info->GetTypeAttr(&type));
        EXPECT_TRUE(type->guid == row.id);
        info->ReleaseTypeAttr(type);
        ASSERT_HRESULT_SUCCEEDED(object->GetTypeInfo(0, 0, info.ReleaseAndGetAddressOf()));
        EXPECT_EQ(NameOf(info.Get()), std::wstring(L"_") + row.name);
    }
    BSTR help = nullptr;
    Check(TypeLibrary()->GetDocumentation(-1, nullptr, nullptr, nullptr, &help));
    EXPECT_TRUE(Taken(help).ends_with(L"quill.chm"));
}

} // namespace
} // namespace quill::test
