// The lines that a list dialog offers: what they show, what they stand for, which of them are
// chosen, and which a filter and an order leave on show. Nothing here knows a window.
//
// Lines are counted from 0 as they were given, rows as they are on show.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill {

// Arrays with more elements are not read.
constexpr size_t kMostElements = 1'000'000;

// What a script reads after the dialog: one entry for each chosen line.
struct ChosenLines {
    std::vector<Variant> indexes, items, keys;
};

class Choices {
public:
    // The parts of a text between CR LF that are not empty.
    explicit Choices(std::wstring text);

    enum class EmptyLines { Shown, LeftOut };

    // A line for each element; one without a text is empty.
    Choices(std::vector<Variant> elements, EmptyLines empty);

    size_t Count() const noexcept { return lines_.size(); }
    // A NUL follows the text.
    std::wstring_view Text(size_t line) const noexcept;
    bool IsChosen(size_t line) const noexcept { return chosen_[line]; }
    // A line that does not exist is ignored.
    void Choose(size_t line, bool chosen = true);
    void ChooseNone();
    // False for an element that was left out.
    bool HasLineFor(size_t position) const noexcept;
    // The chosen lines, in the order in which they were given.
    std::vector<size_t> Chosen() const;

    // Chooses the lines at the positions that a script gives: a number, or an array of up to
    // `limit`. Only numbers and texts that are numbers count, Booleans do not. With `one`, the
    // first counts that a line has.
    void ChooseAt(const VARIANT& positions, size_t limit, bool one);

    size_t Rows() const noexcept { return rows_.size(); }
    size_t LineOf(size_t row) const noexcept { return rows_[row]; }
    std::optional<size_t> FirstChosenRow() const noexcept;
    // The first row from `first` on whose text begins like this, in either case; after the last
    // one the search goes on at the top.
    std::optional<size_t> FindRow(std::wstring_view beginning, size_t first) const;

    // Lines are split at tabs into this many columns; 0 is one without a heading. The last column
    // takes what is left.
    void SetColumns(size_t columns) noexcept { columns_ = columns; }
    std::wstring_view Cell(size_t line, size_t column) const noexcept;

    // Leaves those lines on show that hold all words of the text, in either case.
    void SetFilter(const std::wstring& text);

    // Sorts by a column, numbers as numbers and before texts; a second time reverses the order.
    void SortBy(size_t column);
    bool Descending() const noexcept { return descending_; }
    std::optional<size_t> SortedBy() const noexcept { return sortedBy_; }

    // `keys` is an array or Empty; a line without a key of its own has its element as the key.
    ChosenLines Results(const VARIANT& keys) const;

private:
    struct Line {
        size_t begin, length; // in text_
        size_t position;      // among the elements
    };

    void Add(size_t begin, size_t length, size_t position)
    {
        lines_.push_back({begin, length, position});
    }
    void Prepare();
    void FindRows();
    bool Matches(const Line& line) const noexcept;
    Variant ElementOf(size_t line) const;

    std::wstring text_;             // of all lines, with a NUL behind each
    std::vector<Variant> elements_; // none where the lines came as a text
    std::vector<Line> lines_;
    std::vector<bool> chosen_;
    size_t columns_ = 0;
    std::vector<size_t> order_, rows_; // lines: all of them, those on show
    std::optional<size_t> sortedBy_;
    bool descending_ = false;
    std::wstring folded_; // text_ in upper case, made when it is first needed
    std::vector<std::wstring> words_;
};

} // namespace quill
