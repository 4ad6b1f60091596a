// What is published, as the two that know it have it: the type library, and the reference pages.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill::test {

constexpr USHORT kByReference = 0x8000;

// Types are those of scripts ("Long"); of an argument by reference, the one behind it.
struct Parameter {
    std::string name, type, initial; // `initial` as scripts write it; empty where there is none
    USHORT flags;                    // PARAMFLAG_, and kByReference
};

struct Member {
    DISPID id;
    INVOKEKIND access;
    std::string name, type; // `type` is empty for a method without a result
    std::vector<Parameter> parameters;
    bool event; // of the class, not a member that is called

    // Find(items, value [, start = 0 [, ignorecase = False]])` → Long
    std::string Signature() const;
};

// By the class, its events too; each in the order of publication.
const std::map<std::string, std::vector<Member>>& PublishedMembers();

VARTYPE KindOf(const std::string& type); // VT_DISPATCH for an object

// A row of a page's tables of properties.
struct PropertyRow {
    std::string file;
    int line;
    std::string name, type, initial, accepted, remark;

    // What a new object of the class answers; none where that depends.
    std::optional<Variant> Initial(const std::string& className) const;
};

// What the words about accepted values say: "1 to 10, others are ignored".
class Rule {
public:
    explicit Rule(const PropertyRow& row); // throws std::runtime_error for unknown words

    // What the property is after a value of its type was put; null where that raises Error().
    std::optional<Variant> After(const VARIANT& before, const VARIANT& put) const;
    unsigned Error() const { return error_; }
    // Values of its type: at its limits, beyond, and others.
    std::vector<Variant> Samples() const;

private:
    struct Range {
        LONGLONG low, high;
        std::optional<LONGLONG> stored; // in place of any of them
    };
    using Ranges = std::vector<Range>;
    // What becomes of a number outside of all ranges.
    using Others = LONGLONG(LONGLONG before, LONGLONG put, const Ranges& ranges);

    VARTYPE kind_;
    Ranges ranges_;
    Others* others_; // null: an error
    bool sum_ = false;
    size_t longest_ = std::wstring::npos;
    bool keepsWhenEmpty_ = false;
    bool path_ = false;
    bool array_ = false; // or Empty
    unsigned error_ = 0;
};

struct Page {
    std::string file;
    std::vector<std::string> classes; // none: it tells what classes share
    std::vector<PropertyRow> properties;
    struct Method {
        int line;
        std::string signature, text; // of the heading, and what follows it
    };
    std::vector<Method> methods;
};
const std::vector<Page>& Pages();

// The row of a class's own page, or else of a shared one; null where there is none.
const PropertyRow* FindRow(const std::string& className, const std::string& property);

// Equal in type and value; of arrays and objects, in type.
bool Same(const VARIANT& left, const VARIANT& right);

} // namespace quill::test
