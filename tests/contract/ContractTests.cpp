// The pages and the type library say the same, and the objects do what they say.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "contract/Published.h"
#include "core/Catalogue.h"
#include "core/TypeLibrary.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

// Of what compiled clients rely on.
constexpr std::uint64_t kFingerprint = 0xDC76676411E66B9F;

std::string NameOf(ITypeInfo* info)
{
    BSTR name = nullptr;
    Check(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    return Narrow(Bstr(name).get());
}

TYPEATTR AttributesOf(ITypeInfo* info)
{
    TYPEATTR* attributes = nullptr;
    Check(info->GetTypeAttr(&attributes));
    const TYPEATTR copy = *attributes;
    info->ReleaseTypeAttr(attributes);
    return copy;
}

// Name, identifier, flags, bases and constants of a type.
std::string DescribeType(ITypeInfo* info)
{
    const TYPEATTR type = AttributesOf(info);
    std::ostringstream text;
    wchar_t id[39];
    StringFromGUID2(type.guid, id, 39);
    text << NameOf(info) << ' ' << Narrow(id) << ' ' << type.typekind << ' ' << type.wTypeFlags;
    // A dual interface has its own base behind -1.
    for (UINT index = 0; index <= type.cImplTypes; ++index) {
        HREFTYPE reference = 0;
        INT flags = 0;
        ComPtr<ITypeInfo> other;
        if (FAILED(
                info->GetRefTypeOfImplType(index < type.cImplTypes ? index : UINT(-1), &reference)))
            continue;
        Check(info->GetRefTypeInfo(reference, &other));
        if (index < type.cImplTypes) Check(info->GetImplTypeFlags(index, &flags));
        text << ' ' << NameOf(other.Get()) << ' ' << flags;
        if (SUCCEEDED(other->GetRefTypeOfImplType(0, &reference)) &&
            SUCCEEDED(other->GetRefTypeInfo(reference, other.ReleaseAndGetAddressOf())))
            text << " : " << NameOf(other.Get());
    }
    for (UINT index = 0; index < type.cVars; ++index) {
        VARDESC* constant = nullptr;
        Check(info->GetVarDesc(index, &constant));
        BSTR name = nullptr;
        Check(info->GetDocumentation(constant->memid, &name, nullptr, nullptr, nullptr));
        text << ' ' << Narrow(Bstr(name).get()) << ' ' << V_I4(constant->lpvarValue);
        info->ReleaseVarDesc(constant);
    }
    text << '\n';
    return text.str();
}

class Contract : public testing::Test {
protected:
    using Values = std::map<std::string, Value>;

    // One that nobody has used; of the class without a factory, an open file.
    ScriptObject Fresh(const std::string& name) const
    {
        if (name != "BinFile") return ScriptObject::Make(std::wstring(name.begin(), name.end()));
        ScriptObject files = ScriptObject::Make(L"File");
        return ScriptObject(files.Call(L"OpenBinary", folder_.Write(L"data", "")).Object());
    }
    static Value Get(ScriptObject& object, const std::string& name)
    {
        return object.Get(std::wstring(name.begin(), name.end()).c_str());
    }
    // All that do not change by themselves.
    static Values Snapshot(ScriptObject& object, const std::string& name)
    {
        Values values;
        for (const Member& member : PublishedMembers().at(name)) {
            const PropertyRow* row = FindRow(name, member.name);
            if (row && member.access == INVOKE_PROPERTYGET && row->Initial(name))
                values.emplace(member.name, Get(object, member.name));
        }
        return values;
    }

    TemporaryFolder folder_;
};

TEST_F(Contract, IdentifiersOrderAndFlagsStay)
{
    std::string published;
    for (UINT index = 0; index < TypeLibrary()->GetTypeInfoCount(); ++index) {
        ComPtr<ITypeInfo> info;
        Check(TypeLibrary()->GetTypeInfo(index, &info));
        published += DescribeType(info.Get());
    }
    for (const auto& [name, members] : PublishedMembers())
        for (const Member& member : members) {
            published += name + ' ' + std::to_string(member.id) + ' ' +
                         std::to_string(member.access) + ' ' + member.Signature();
            for (const Parameter& parameter : member.parameters)
                published += ' ' + parameter.type + ' ' + std::to_string(parameter.flags);
            published += '\n';
        }
    std::uint64_t fingerprint = 0xCBF29CE484222325;
    for (const unsigned char unit : published)
        fingerprint = (fingerprint ^ unit) * 0x100000001B3;
    EXPECT_EQ(fingerprint, kFingerprint)
        << published << "What is published has changed. If all above was there before, but for "
        << "members added at the end of a class, kFingerprint is now 0x" << std::hex << fingerprint;
}

// A class is made by its factory, once each, and says which it is.
TEST_F(Contract, CatalogueAndTypeLibraryAgree)
{
    for (const CatalogueRow& row : kCatalogue) {
        const std::string name = Narrow(row.name);
        ComPtr<IDispatch> object;
        ComPtr<IProvideClassInfo2> provider;
        ComPtr<ITypeInfo> info;
        ASSERT_HRESULT_SUCCEEDED(CreateHere(row, IID_PPV_ARGS(&object))) << name;
        ASSERT_HRESULT_SUCCEEDED(object.As(&provider)) << name;
        ASSERT_HRESULT_SUCCEEDED(provider->GetClassInfo(&info)) << name;
        EXPECT_EQ(NameOf(info.Get()), name);
        EXPECT_TRUE(AttributesOf(info.Get()).guid == row.id) << name;
        ASSERT_HRESULT_SUCCEEDED(object->GetTypeInfo(0, 0, info.ReleaseAndGetAddressOf()));
        EXPECT_EQ(NameOf(info.Get()), '_' + name);
    }
    BSTR help = nullptr;
    Check(TypeLibrary()->GetDocumentation(-1, nullptr, nullptr, nullptr, &help));
    EXPECT_TRUE(Narrow(Bstr(help).get()).ends_with("quill.chm"));
    // BinFile objects come from File.
    EXPECT_EQ(PublishedMembers().size(),
              static_cast<size_t>(std::distance(kCatalogue.begin(), kCatalogue.end())) + 1);
}

TEST_F(Contract, PagesHaveEveryMethodAsPublished)
{
    for (const Page& page : Pages()) {
        std::vector<std::string> published;
        for (const std::string& name : page.classes)
            for (const Member& member : PublishedMembers().at(name)) {
                if (member.access != INVOKE_FUNC) continue;
                published.push_back(member.Signature());
                const auto method =
                    std::ranges::find(page.methods, published.back(), &Page::Method::signature);
                if (method == page.methods.end()) {
                    ADD_FAILURE_AT(page.file.c_str(), 1) << "lacks ### `" << published.back();
                    continue;
                }
                for (const Parameter& parameter : member.parameters) {
                    // "- `items` (String): the lines", or "- `first`, `second` (Long): the numbers"
                    const std::regex argument("- [^(\\n]*`" + parameter.name + "`[^(\\n]*\\(" +
                                              parameter.type + "[,)]");
                    if (!std::regex_search(method->text, argument))
                        ADD_FAILURE_AT(page.file.c_str(), method->line)
                            << "lacks the argument `" << parameter.name << "` (" << parameter.type;
                }
            }
        for (const Page::Method& method : page.methods)
            if (std::ranges::find(published, method.signature) == published.end())
                ADD_FAILURE_AT(page.file.c_str(), method.line)
                    << "not published: " << method.signature;
    }
}

TEST_F(Contract, PagesHaveEveryPropertyAsPublished)
{
    std::vector<const PropertyRow*> used;
    for (const auto& [name, members] : PublishedMembers())
        for (const Member& member : members) {
            if (member.access == INVOKE_FUNC) continue;
            const PropertyRow* row = FindRow(name, member.name);
            if (!row) {
                ADD_FAILURE() << "no page has a row for " << name << '.' << member.name;
                continue;
            }
            used.push_back(row);
            const auto writes = [&, &id = member.id](const Member& other) {
                return other.id == id && other.access == INVOKE_PROPERTYPUT;
            };
            if (member.access == INVOKE_PROPERTYGET &&
                (row->type != member.type ||
                 (row->accepted == "read-only") == std::ranges::any_of(members, writes)))
                ADD_FAILURE_AT(row->file.c_str(), row->line)
                    << name << '.' << member.name << " is a " << member.type << ", and "
                    << row->accepted;
        }
    for (const Page& page : Pages())
        for (const PropertyRow& row : page.properties)
            if (std::ranges::find(used, &row) == used.end())
                ADD_FAILURE_AT(row.file.c_str(), row.line) << "not published: " << row.name;
}

TEST_F(Contract, DefaultsAreThoseOfThePages)
{
    for (const auto& [name, members] : PublishedMembers()) {
        ScriptObject object = Fresh(name);
        for (const auto& [property, value] : Snapshot(object, name)) {
            const PropertyRow& row = *FindRow(name, property);
            if (!Same(value, *row.Initial(name)))
                ADD_FAILURE_AT(row.file.c_str(), row.line)
                    << name << '.' << property << " is " << Describe(value);
        }
    }
}

// Each of a property's samples after the other, on an object of its own. Another property may move
// only where one of the two rows names the other.
TEST_F(Contract, PropertiesChangeAsThePagesSayAndNothingElseDoes)
{
    for (const auto& [name, members] : PublishedMembers())
        for (const Member& member : members) {
            if (member.access != INVOKE_PROPERTYPUT || !FindRow(name, member.name)) continue;
            const PropertyRow& row = *FindRow(name, member.name);
            const auto fail = [&, &className = name](const Variant& put) {
                return testing::Message()
                       << className << '.' << row.name << " = " << Describe(put) << ": ";
            };
            try {
                const Rule rule(row);
                ScriptObject object = Fresh(name);
                for (const Variant& put : rule.Samples()) {
                    Values before = Snapshot(object, name);
                    const Value old = Get(object, row.name);
                    const auto expected = rule.After(old, put);
                    const ScriptError error = ErrorOf([&] {
                        object.Put(std::wstring(row.name.begin(), row.name.end()).c_str(), put);
                    });
                    const Value now = Get(object, row.name);
                    if (error.number != (expected ? 0 : rule.Error()) ||
                        !Same(now, expected ? *expected : old))
                        ADD_FAILURE_AT(row.file.c_str(), row.line)
                            << fail(put) << error.what() << ' ' << Describe(now);
                    for (const auto& [other, value] : Snapshot(object, name))
                        if (other != row.name && !Same(value, before[other]) &&
                            row.remark.find('`' + other + '`') == std::string::npos &&
                            FindRow(name, other)->remark.find('`' + row.name + '`') ==
                                std::string::npos)
                            ADD_FAILURE_AT(row.file.c_str(), row.line)
                                << fail(put) << other << " becomes " << Describe(value);
                }
            } catch (const std::exception& error) {
                ADD_FAILURE_AT(row.file.c_str(), row.line) << error.what();
            }
        }
}

} // namespace
} // namespace quill::test
