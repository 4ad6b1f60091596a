#include "services/Lists.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "core/Text.h"

namespace quill {

namespace {

bool CanBeElement(LONG type) noexcept
{
    if (type & ~VT_TYPEMASK) return false;
    return IsNumericType(static_cast<VARTYPE>(type)) || type == VT_DATE || type == VT_BSTR;
}

// What SafeArrayPutElement copies from.
void* ElementIn(Variant& value, VARTYPE type) noexcept
{
    if (type == VT_BSTR) return V_BSTR(&value);
    if (type == VT_DECIMAL) return &V_DECIMAL(&value);
    return &V_UI1(&value);
}

std::optional<double> NumberIn(const VARIANT& value)
{
    Variant number;
    // What is not a number would be in no order with the others.
    if (!Convert(number, value, VT_R8) || std::isnan(V_R8(&number))) return {};
    return V_R8(&number);
}

// Texts with the same folded text are equal.
std::wstring Folded(std::wstring text, bool ignoreCase)
{
    const auto length = static_cast<int>(text.size());
    if (ignoreCase && length > 0)
        LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, text.data(), length, text.data(),
                      length, nullptr, nullptr, 0);
    return text;
}

bool BeforeInLanguage(const std::wstring& left, const std::wstring& right)
{
    if (left.empty() || right.empty()) return left.size() < right.size();
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, 0, left.data(), static_cast<int>(left.size()),
                           right.data(), static_cast<int>(right.size()), nullptr, nullptr,
                           0) == CSTR_LESS_THAN;
}

template <class KeyOf, class Before>
Variant SortBy(std::vector<Variant> elements, KeyOf keyOf, Before before, bool descending)
{
    using Key = typename std::invoke_result_t<KeyOf, const VARIANT&>::value_type;
    struct Entry {
        Key key;
        Variant* element;
    };
    std::vector<Entry> entries;
    std::vector<Variant*> without;
    entries.reserve(elements.size());
    for (Variant& element : elements) {
        if (auto key = keyOf(element))
            entries.push_back({*std::move(key), &element});
        else
            without.push_back(&element);
    }
    std::stable_sort(entries.begin(), entries.end(), [&](const Entry& left, const Entry& right) {
        return descending ? before(right.key, left.key) : before(left.key, right.key);
    });

    std::vector<Variant> sorted;
    sorted.reserve(elements.size());
    for (const Entry& entry : entries)
        sorted.push_back(std::move(*entry.element));
    for (Variant* element : without)
        sorted.push_back(std::move(*element));
    return MakeList(std::move(sorted));
}

constexpr double kMostMembers = 10'000;

// The value of an object's member; Empty where it has no such member, nothing when it fails.
std::optional<Variant> MemberOf(IDispatch& object, std::wstring name)
{
    DISPID id = DISPID_UNKNOWN;
    wchar_t* spelled = name.data();
    const HRESULT found = object.GetIDsOfNames(IID_NULL, &spelled, 1, LOCALE_USER_DEFAULT, &id);
    Variant value;
    if (found == DISP_E_UNKNOWNNAME) return value;
    DISPPARAMS none{};
    if (FAILED(found) ||
        FAILED(object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &value,
                             nullptr, nullptr)))
        return std::nullopt;
    return value;
}

std::optional<std::vector<Variant>> MembersOf(IDispatch& object, size_t limit)
{
    const auto length = MemberOf(object, L"length");
    const auto count = length ? NumberIn(*length) : std::nullopt;
    if (!count || V_VT(&*length) == VT_EMPTY || *count < 0 ||
        *count > std::min(static_cast<double>(limit), kMostMembers))
        return std::nullopt;
    std::vector<Variant> elements(static_cast<size_t>(*count));
    for (size_t index = 0; index < elements.size(); ++index) {
        auto member = MemberOf(object, std::to_wstring(index));
        if (!member) return std::nullopt;
        elements[index] = std::move(*member);
    }
    return elements;
}

std::vector<Variant> ElementsOrNone(const VARIANT& items)
{
    return ElementsIn(items).value_or(std::vector<Variant>());
}

} // namespace

std::optional<std::vector<Variant>> ElementsIn(const VARIANT& items)
{
    const SAFEARRAY* array = ArrayOf(items);
    if (!array || array->cDims != 1 || (array->fFeatures & FADF_RECORD)) return {};
    std::vector<Variant> elements = ElementsOf(*array, SIZE_MAX);
    for (Variant& element : elements)
        if (V_ISBYREF(&element)) element = Variant::Dereferenced(element);
    return elements;
}

std::optional<std::vector<Variant>> ElementsOfAny(const VARIANT& items, size_t limit)
{
    if (const SAFEARRAY* array = ArrayOf(items)) {
        if (array->cDims != 1 || array->rgsabound[0].cElements > limit) return {};
        return ElementsIn(items);
    }
    Variant object;
    if (FAILED(VariantCopyInd(&object, const_cast<VARIANT*>(&items))) ||
        V_VT(&object) != VT_DISPATCH || !V_DISPATCH(&object))
        return {};
    return MembersOf(*V_DISPATCH(&object), limit);
}

std::optional<std::wstring> TextIn(const VARIANT& value)
{
    Variant text;
    const VARIANT* source = &value;
    if (V_VT(source) != VT_BSTR) {
        if (!Convert(text, value, VT_BSTR)) return {};
        source = &text;
    }
    return std::wstring(V_BSTR(source) ? V_BSTR(source) : L"", SysStringLen(V_BSTR(source)));
}

bool Convert(Variant& converted, const VARIANT& value, VARTYPE type) noexcept
{
    converted = Variant();
    Variant plain;
    if (FAILED(VariantCopyInd(&plain, const_cast<VARIANT*>(&value)))) return false;
    if (V_ISARRAY(&plain) || V_VT(&plain) == VT_DISPATCH || V_VT(&plain) == VT_UNKNOWN ||
        V_VT(&plain) == VT_ERROR)
        return false;
    return SUCCEEDED(VariantChangeType(&converted, &plain, VARIANT_ALPHABOOL, type));
}

Variant MakeList(std::vector<Variant> elements)
{
    Array array = MakeArray(VT_VARIANT, elements.size());
    std::transform(elements.begin(), elements.end(), DataOf<VARIANT>(*array).begin(),
                   [](Variant& element) { return element.Detach(); });
    return Variant(std::move(array));
}

Variant VariantArray(const VARIANT& items)
{
    return MakeList(ElementsOrNone(items));
}

Variant TypedArray(const VARIANT& items, LONG vartype)
{
    if (!CanBeElement(vartype)) return MakeList({});
    const auto type = static_cast<VARTYPE>(vartype);
    const std::vector<Variant> elements = ElementsOrNone(items);
    Array array = MakeArray(type, elements.size());
    Variant converted;
    LONG index = 0;
    for (const Variant& element : elements) {
        if (!Convert(converted, element, type)) return Variant(MakeArray(type, 0));
        Check(SafeArrayPutElement(array.get(), &index, ElementIn(converted, type)));
        ++index;
    }
    return Variant(std::move(array));
}

Variant Sort(const VARIANT& items, bool numeric, bool descending)
{
    std::vector<Variant> elements = ElementsOrNone(items);
    if (numeric) return SortBy(std::move(elements), NumberIn, std::less<double>(), descending);
    return SortBy(std::move(elements), TextIn, BeforeInLanguage, descending);
}

Variant Unique(const VARIANT& items, bool ignoreCase)
{
    std::vector<Variant> kept;
    std::unordered_set<std::wstring> seen;
    for (Variant& element : ElementsOrNone(items)) {
        auto text = TextIn(element);
        if (!text || seen.insert(Folded(*std::move(text), ignoreCase)).second)
            kept.push_back(std::move(element));
    }
    return MakeList(std::move(kept));
}

LONG Find(const VARIANT& items, const VARIANT& value, LONG start, bool ignoreCase)
{
    auto sought = TextIn(value);
    if (!sought || start < 0) return -1;
    const std::wstring text = Folded(*std::move(sought), ignoreCase);
    const std::vector<Variant> elements = ElementsOrNone(items);
    for (size_t index = static_cast<size_t>(start); index < elements.size(); ++index) {
        auto candidate = TextIn(elements[index]);
        if (candidate && Folded(*std::move(candidate), ignoreCase) == text)
            return static_cast<LONG>(index);
    }
    return -1;
}

std::wstring Join(const VARIANT& items, const std::wstring& separator)
{
    std::wstring joined;
    bool first = true;
    for (const Variant& element : ElementsOrNone(items)) {
        if (!first) joined += separator;
        first = false;
        joined += TextIn(element).value_or(std::wstring());
    }
    return joined;
}

Variant Split(const std::wstring& text, const std::wstring& separator)
{
    if (text.empty()) return MakeList({});
    if (separator.empty()) return MakeStringArray({text}, true);
    return MakeStringArray(SplitAt(text, separator), true);
}

} // namespace quill
