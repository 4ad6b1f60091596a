#include "contract/Published.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <regex>

#include "core/TypeLibrary.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

using namespace std::string_view_literals;

const std::map<std::string, VARTYPE> kTypes{
    {"Integer", VT_I2}, {"Long", VT_I4},     {"Boolean", VT_BOOL},    {"Currency", VT_CY},
    {"Date", VT_DATE},  {"String", VT_BSTR}, {"Variant", VT_VARIANT}, {"", VT_VOID}};

std::string TypeName(ITypeInfo* info, const TYPEDESC& type)
{
    if (type.vt == VT_PTR) return TypeName(info, *type.lptdesc);
    if (type.vt == VT_USERDEFINED) {
        ComPtr<ITypeInfo> referred;
        BSTR name = nullptr;
        Check(info->GetRefTypeInfo(type.hreftype, &referred));
        Check(referred->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
        const Bstr owned(name);
        return *name == L'_' ? Narrow(name + 1) : "Long"; // an object, or an enumeration
    }
    for (const auto& [name, kind] : kTypes)
        if (kind == type.vt) return name;
    return "type " + std::to_string(type.vt);
}

std::string Literal(const VARIANT& value)
{
    Variant text;
    Check(VariantChangeType(&text, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR));
    const char* quote = V_VT(&value) == VT_BSTR ? "\"" : "";
    return quote + Narrow(V_BSTR(&text) ? V_BSTR(&text) : L"") + quote;
}

Member ReadMember(ITypeInfo* info, const FUNCDESC& function, bool event)
{
    BSTR names[16]{};
    UINT count = 0;
    Check(info->GetNames(function.memid, names, 16, &count));
    Member member{function.memid,
                  function.invkind,
                  Narrow(names[0]),
                  TypeName(info, function.elemdescFunc.tdesc),
                  {},
                  event};
    for (UINT index = 0; index < static_cast<UINT>(function.cParams); ++index) {
        const TYPEDESC& type = function.lprgelemdescParam[index].tdesc;
        const PARAMDESC& given = function.lprgelemdescParam[index].paramdesc;
        const USHORT flags = given.wParamFlags;
        member.parameters.push_back(
            {index + 1 < count ? Narrow(names[index + 1]) : "", TypeName(info, type),
             flags & PARAMFLAG_FHASDEFAULT ? Literal(given.pparamdescex->varDefaultValue) : "",
             static_cast<USHORT>(flags | (type.vt == VT_PTR ? kByReference : 0))});
    }
    for (BSTR name : names)
        SysFreeString(name);
    return member;
}

Page ParsePage(const std::filesystem::path& path)
{
    static const std::regex title("Quill\\.(\\w+)|^# (BinFile)$");
    static const std::regex method("### `(\\w+\\(.*)");
    static const std::regex row(
        R"(\| `(\w+)` \| (Integer|Long|Boolean|Currency|Date|String|Variant) )"
        R"(\| ([^|]*) \| ([^|]*) \| (.*) \|)");
    Page page{path.string(), {}, {}, {}};
    std::ifstream lines(path);
    std::smatch found;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        for (std::sregex_iterator name(line.begin(), line.end(), title), end;
             number == 1 && name != end; ++name)
            page.classes.push_back((*name)[1].str() + (*name)[2].str());
        if (std::regex_match(line, found, method))
            page.methods.push_back({number, found[1], {}});
        else if (!page.methods.empty())
            page.methods.back().text += line + '\n';
        if (std::regex_match(line, found, row))
            page.properties.push_back(
                {page.file, number, found[1], found[2], found[3], found[4], found[5]});
    }
    return page;
}

LONGLONG WholeOf(const VARIANT& value)
{
    Variant whole;
    VariantChangeType(&whole, const_cast<VARIANT*>(&value), 0, VT_I8);
    return V_I8(&whole);
}

// None when it does not fit.
std::optional<Variant> OfKind(VARTYPE kind, LONGLONG number)
{
    Variant value;
    V_VT(&value) = VT_I8;
    V_I8(&value) = number;
    if (FAILED(VariantChangeType(&value, &value, 0, kind))) return {};
    return value;
}

std::wstring_view TextOf(const VARIANT& value)
{
    return {V_BSTR(&value) ? V_BSTR(&value) : L"", SysStringLen(V_BSTR(&value))};
}

} // namespace

std::string Member::Signature() const
{
    std::string text = name + '(';
    std::string end;
    for (const Parameter& parameter : parameters) {
        const bool first = &parameter == parameters.data();
        const bool optional = parameter.flags & PARAMFLAG_FOPT;
        text += first ? "" : optional ? " " : ", ";
        if (optional) text += first ? "[" : "[, ", end += ']';
        text += parameter.name;
        if (!parameter.initial.empty()) text += " = " + parameter.initial;
    }
    return text + end + ")`" + (type.empty() ? "" : " → " + type);
}

const std::map<std::string, std::vector<Member>>& PublishedMembers()
{
    static const auto published = [] {
        std::map<std::string, std::vector<Member>> members;
        ITypeLib* library = TypeLibrary();
        for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
            ComPtr<ITypeInfo> info;
            BSTR name = nullptr;
            TYPEATTR* attributes = nullptr;
            Check(library->GetTypeInfo(index, &info));
            Check(info->GetTypeAttr(&attributes));
            const UINT count = attributes->typekind == TKIND_DISPATCH ? attributes->cFuncs : 0;
            info->ReleaseTypeAttr(attributes);
            Check(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
            const std::string owner = Narrow(name + std::wcsspn(name, L"_"));
            const bool event = name[0] == L'_' && name[1] == L'_';
            SysFreeString(name);
            for (UINT place = 0; place < count; ++place) {
                FUNCDESC* function = nullptr;
                Check(info->GetFuncDesc(place, &function));
                if (!(function->wFuncFlags & FUNCFLAG_FRESTRICTED))
                    members[owner].push_back(ReadMember(info.Get(), *function, event));
                info->ReleaseFuncDesc(function);
            }
        }
        return members;
    }();
    return published;
}

VARTYPE KindOf(const std::string& type)
{
    const auto found = kTypes.find(type);
    return found == kTypes.end() ? static_cast<VARTYPE>(VT_DISPATCH) : found->second;
}

std::optional<Variant> PropertyRow::Initial(const std::string& className) const
{
    if (initial == "—") return {};
    if (initial == "Empty") return Variant();
    if (initial == "empty array") return MakeStringArray({}, true);
    if (type == "Boolean") return Variant(initial == "True");
    if (type != "String")
        return OfKind(KindOf(type),
                      initial.starts_with("&H")
                          ? static_cast<LONG>(std::stoull(initial.substr(2), nullptr, 16))
                          : std::stoll(initial));
    std::string text = initial == "empty" ? "" : initial;
    // Two classes: "QUILL Window" or "QUILL Window2"
    if (const size_t other = text.find(" or "); other != std::string::npos)
        text = text.ends_with(className + '"') ? text.substr(other + 4) : text.substr(0, other);
    std::erase_if(text, [](char unit) { return unit == '"' || unit == '`'; });
    return Variant(std::wstring(text.begin(), text.end()));
}

Rule::Rule(const PropertyRow& row) : kind_(KindOf(row.type))
{
    using Number = LONGLONG;
    static const std::map<std::string, Others*> words{
        {"any", [](Number, Number put, const Ranges&) { return put; }},
        {"any, always resets", [](Number, Number, const Ranges&) { return Number{0}; }},
        {"are ignored", [](Number before, Number, const Ranges&) { return before; }},
        {"store 0", [](Number, Number, const Ranges&) { return Number{0}; }},
        {"become the nearest",
         [](Number, Number put, const Ranges& ranges) {
             return std::clamp(put, ranges[0].low, ranges[0].high);
         }},
        {"are cut to 24 bits", [](Number, Number put, const Ranges&) { return put & 0xFFFFFF; }},
        {"are dropped",
         [](Number, Number put, const Ranges& bits) {
             return std::accumulate(
                 bits.begin(), bits.end(), Number{0},
                 [&](Number sum, const Range& bit) { return sum | (put & bit.low); });
         }},
    };
    static const std::regex cut("cut to (\\d+)(, an empty text is ignored)?");
    static const std::regex list("(sum of )?(.*), others (raise (0x\\w+)|[^,]*)");
    static const std::regex range(R"((-?\d+)(?: to (-?\d+))?(?: as (\d+))?(?:, |$))");
    const std::string text = row.accepted == "read-only" ? "any" : row.accepted;
    std::smatch found;
    std::string others = text;
    if (std::regex_match(text, found, cut)) {
        longest_ = std::stoul(found[1]);
        keepsWhenEmpty_ = found[2].matched;
        others = "any";
    } else if (std::regex_match(text, found, list)) {
        others = found[3];
        if (found[4].matched) error_ = std::stoul(found[4], nullptr, 16);
        sum_ = found[1].matched;
        std::string values = found[2];
        path_ = values == "an existing path";
        array_ = values == "an array or Empty";
        for (;
             !path_ && !array_ && std::regex_search(values, found, range) && found.position() == 0;
             values = found.suffix()) {
            const Number low = std::stoll(found[1]);
            ranges_.push_back({low, found[2].matched ? std::stoll(found[2]) : low, {}});
            if (found[3].matched) ranges_.back().stored = std::stoll(found[3]);
        }
        if (!path_ && !array_ && !values.empty()) others = values;
    }
    const auto word = words.find(others);
    if (word == words.end() && !error_)
        throw std::runtime_error("these words are not understood: " + text);
    others_ = error_ ? nullptr : word->second;
}

std::optional<Variant> Rule::After(const VARIANT& before, const VARIANT& put) const
{
    const bool keeps = (keepsWhenEmpty_ && SysStringLen(V_BSTR(&put)) == 0) ||
                       (array_ && !ArrayOf(put) && V_VT(&put) != VT_EMPTY);
    if (kind_ == VT_BSTR && !keeps) {
        if (path_ && !std::filesystem::exists(TextOf(put))) return {};
        return Variant(TextOf(put).substr(0, longest_));
    }
    if (kind_ == VT_BSTR || kind_ == VT_VARIANT) return test::Arg(keeps ? before : put).value;
    const LONGLONG number = WholeOf(put);
    for (const Range& range : ranges_)
        if (!sum_ && range.low <= number && number <= range.high)
            return OfKind(kind_, range.stored.value_or(number));
    if (!others_) return {};
    return OfKind(kind_, others_(WholeOf(before), number, ranges_));
}

std::vector<Variant> Rule::Samples() const
{
    std::vector<Variant> samples;
    const size_t length = std::min<size_t>(longest_, 70'000);
    for (const size_t units : {length, length + 1, size_t{0}})
        if (kind_ == VT_BSTR || kind_ == VT_VARIANT)
            samples.emplace_back(std::wstring(units, L'x'));
    if (path_) samples.emplace_back(L"C:\\windows"sv);
    if (kind_ == VT_VARIANT) samples.push_back(MakeStringArray({L"one", L"two"}, true));
    if (array_) samples.emplace_back();
    std::vector<LONGLONG> numbers{0, 1, -1, SHRT_MAX, SHRT_MIN, LONG_MAX, LONG_MIN};
    for (const Range& range : ranges_)
        numbers.insert(numbers.begin(), {range.low, range.high, range.high + 1, range.low - 1});
    for (const LONGLONG number : numbers)
        if (auto value = OfKind(kind_, number); value && kind_ != VT_BSTR)
            samples.push_back(std::move(*value));
    return samples;
}

const std::vector<Page>& Pages()
{
    static const auto pages = [] {
        std::vector<Page> read;
        for (const auto& entry : std::filesystem::directory_iterator(QUILL_DOCS))
            if (entry.path().extension() == ".md") read.push_back(ParsePage(entry.path()));
        return read;
    }();
    return pages;
}

const PropertyRow* FindRow(const std::string& className, const std::string& property)
{
    const PropertyRow* shared = nullptr;
    for (const Page& page : Pages())
        for (const PropertyRow& row : page.properties) {
            if (row.name != property) continue;
            if (std::ranges::find(page.classes, className) != page.classes.end()) return &row;
            if (page.classes.empty()) shared = &row;
        }
    return shared;
}

bool Same(const VARIANT& left, const VARIANT& right)
{
    if (V_VT(&left) != V_VT(&right)) return false;
    if (V_VT(&left) == VT_BSTR) return TextOf(left) == TextOf(right);
    if (V_ISARRAY(&left)) return Describe(left) == Describe(right);
    const HRESULT compared =
        VarCmp(const_cast<VARIANT*>(&left), const_cast<VARIANT*>(&right), LOCALE_INVARIANT, 0);
    return FAILED(compared) || compared == static_cast<HRESULT>(VARCMP_EQ);
}

} // namespace quill::test
