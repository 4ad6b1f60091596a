#include "dialogs/Choices.h"

#include <algorithm>
#include <cwchar>
#include <numeric>

#include "core/Text.h"
#include "services/Lists.h"

namespace quill {

namespace {

// Cells are sorted by this much of their text.
constexpr size_t kSortedUnits = 256;

// A whole number that is meant as a position.
std::optional<size_t> PositionIn(const VARIANT& value) noexcept
{
    const VARTYPE type = V_VT(&value);
    Variant number;
    if (type == VT_BOOL || !(IsNumericType(type) || type == VT_BSTR) ||
        !Convert(number, value, VT_I4) || V_I4(&number) < 0)
        return std::nullopt;
    return static_cast<size_t>(V_I4(&number));
}

// What the cells of a column are sorted by: their number, or a key for the bytewise comparison.
struct SortKey {
    bool isText;
    double number;
    std::string key;

    bool operator<(const SortKey& other) const noexcept
    {
        if (isText != other.isText) return !isText;
        return isText ? key < other.key : number < other.number;
    }
};

SortKey SortKeyOf(std::wstring cell)
{
    const size_t first = cell.find_first_not_of(L' ');
    if (first != std::wstring::npos && wcschr(L"0123456789+-.,(", cell[first])) {
        double number = 0;
        if (SUCCEEDED(VarR8FromStr(cell.data(), LOCALE_USER_DEFAULT, 0, &number)))
            return {false, number, {}};
    }
    const auto map = [&cell](std::string& key) {
        return LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_SORTKEY | NORM_IGNORECASE, cell.data(),
                             static_cast<int>(cell.size()), reinterpret_cast<wchar_t*>(key.data()),
                             static_cast<int>(key.size()), nullptr, nullptr, 0);
    };
    std::string key;
    if (cell.empty()) return {true, 0, key};
    key.resize(static_cast<size_t>(map(key))); // the size that it needs
    map(key);
    return {true, 0, std::move(key)};
}

} // namespace

Choices::Choices(std::wstring text) : text_(std::move(text))
{
    for (size_t begin = 0; begin < text_.size();) {
        const size_t end = std::min(text_.find(kLineBreak, begin), text_.size());
        if (end > begin) Add(begin, end - begin, lines_.size());
        if (end < text_.size()) text_[end] = L'\0';
        begin = end + kLineBreak.size();
    }
    Prepare();
}

Choices::Choices(std::vector<Variant> elements, EmptyLines empty) : elements_(std::move(elements))
{
    lines_.reserve(elements_.size());
    for (size_t position = 0; position < elements_.size(); ++position) {
        Variant converted;
        const Variant* text = &elements_[position];
        if (V_VT(text) != VT_BSTR) {
            VariantChangeType(&converted, const_cast<Variant*>(text), VARIANT_ALPHABOOL, VT_BSTR);
            text = &converted;
        }
        const size_t length = V_VT(text) == VT_BSTR ? SysStringLen(V_BSTR(text)) : 0;
        if (length == 0 && empty == EmptyLines::LeftOut) continue;
        Add(text_.size(), length, position);
        if (length > 0) text_.append(V_BSTR(text), length);
        text_ += L'\0';
    }
    Prepare();
}

void Choices::Prepare()
{
    chosen_.resize(lines_.size());
    order_.resize(lines_.size());
    std::iota(order_.begin(), order_.end(), size_t{0});
    rows_ = order_;
}

std::wstring_view Choices::Text(size_t line) const noexcept
{
    return {text_.data() + lines_[line].begin, lines_[line].length};
}

void Choices::Choose(size_t line, bool chosen)
{
    if (line < chosen_.size()) chosen_[line] = chosen;
}

void Choices::ChooseNone()
{
    chosen_.assign(chosen_.size(), false);
}

bool Choices::HasLineFor(size_t position) const noexcept
{
    return std::any_of(lines_.begin(), lines_.end(),
                       [position](const Line& line) { return line.position == position; });
}

std::vector<size_t> Choices::Chosen() const
{
    std::vector<size_t> lines;
    for (size_t line = 0; line < chosen_.size(); ++line)
        if (chosen_[line]) lines.push_back(line);
    return lines;
}

void Choices::ChooseAt(const VARIANT& positions, size_t limit, bool one)
{
    std::optional<std::vector<Variant>> given = ElementsOfAny(positions, limit);
    if (!given) {
        given.emplace(1);
        VariantCopyInd(&given->front(), const_cast<VARIANT*>(&positions));
    }
    for (const Variant& value : *given) {
        const auto position = PositionIn(value);
        if (!position || *position >= Count()) continue;
        Choose(*position);
        if (one) return;
    }
}

std::optional<size_t> Choices::FirstChosenRow() const noexcept
{
    const auto found =
        std::find_if(rows_.begin(), rows_.end(), [this](size_t line) { return chosen_[line]; });
    if (found == rows_.end()) return std::nullopt;
    return static_cast<size_t>(found - rows_.begin());
}

std::optional<size_t> Choices::FindRow(std::wstring_view beginning, size_t first) const
{
    const auto length = static_cast<int>(beginning.size());
    for (size_t step = 0; step < rows_.size(); ++step) {
        const size_t row = (first + step) % rows_.size();
        const std::wstring_view text = Text(rows_[row]);
        if (text.size() >= beginning.size() &&
            CompareStringOrdinal(text.data(), length, beginning.data(), length, TRUE) == CSTR_EQUAL)
            return row;
    }
    return std::nullopt;
}

std::wstring_view Choices::Cell(size_t line, size_t column) const noexcept
{
    std::wstring_view text = Text(line);
    for (size_t before = 0; before < column; ++before) {
        const size_t tab = text.find(L'\t');
        if (tab == std::wstring_view::npos) return {};
        text.remove_prefix(tab + 1);
    }
    return column + 1 < columns_ ? text.substr(0, text.find(L'\t')) : text;
}

void Choices::SetFilter(const std::wstring& text)
{
    words_ = SplitAt(UpperCase(text), L" ");
    std::erase_if(words_, [](const std::wstring& word) { return word.empty(); });
    if (folded_.empty()) folded_ = UpperCase(text_);
    FindRows();
}

bool Choices::Matches(const Line& line) const noexcept
{
    const std::wstring_view text(folded_.data() + line.begin, line.length);
    return std::all_of(words_.begin(), words_.end(), [text](const std::wstring& word) {
        return text.find(word) != std::wstring_view::npos;
    });
}

void Choices::FindRows()
{
    if (words_.empty()) {
        rows_ = order_;
        return;
    }
    rows_.clear();
    for (size_t line : order_)
        if (Matches(lines_[line])) rows_.push_back(line);
}

void Choices::SortBy(size_t column)
{
    if (sortedBy_ == column) {
        descending_ = !descending_;
        std::reverse(order_.begin(), order_.end());
    } else {
        std::vector<SortKey> keys;
        keys.reserve(lines_.size());
        for (size_t line = 0; line < lines_.size(); ++line)
            keys.push_back(SortKeyOf(std::wstring(Cell(line, column).substr(0, kSortedUnits))));
        std::iota(order_.begin(), order_.end(), size_t{0});
        std::stable_sort(order_.begin(), order_.end(),
                         [&keys](size_t left, size_t right) { return keys[left] < keys[right]; });
        sortedBy_ = column;
        descending_ = false;
    }
    FindRows();
}

Variant Choices::ElementOf(size_t line) const
{
    return elements_.empty() ? Variant(Text(line))
                             : Variant::Dereferenced(elements_[lines_[line].position]);
}

ChosenLines Choices::Results(const VARIANT& keys) const
{
    const SAFEARRAY* array = ArrayOf(keys);
    const auto given = array ? DataOf<VARIANT>(*array) : std::span<VARIANT>();
    ChosenLines results;
    for (size_t line : Chosen()) {
        const size_t position = lines_[line].position;
        const bool hasKey = position < given.size() && V_VT(&given[position]) != VT_EMPTY;
        results.indexes.emplace_back(static_cast<LONG>(position));
        results.items.push_back(ElementOf(line));
        results.keys.push_back(hasKey ? Variant::Dereferenced(given[position]) : ElementOf(line));
    }
    return results;
}

} // namespace quill
