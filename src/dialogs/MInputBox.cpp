#include "dialogs/MInputBox.h"

#include <cmath>

#include "core/Catalogue.h"
#include "core/Dates.h"
#include "core/Text.h"
#include "core/quillfn.h"

namespace quill {

namespace {

constexpr WORD kFirstYear = 1753; // that the platform's calendar has as a whole

// A field takes an element as its type. Throws AutomationError for what cannot be converted.
void Take(std::wstring& field, const Variant& element)
{
    field = ToText(element);
}

void Take(SHORT& field, const Variant& element)
{
    Variant value;
    Check(VariantChangeType(&value, const_cast<Variant*>(&element), 0, VT_I2));
    field = V_I2(&value);
}

void Take(bool& field, const Variant& element)
{
    Variant value;
    Check(VariantChangeType(&value, const_cast<Variant*>(&element), 0, VT_BOOL));
    field = V_BOOL(&value) != VARIANT_FALSE;
}

// Integers count without a sign; other types than Integer and Long are no colours.
void Take(COLORREF& field, const Variant& element)
{
    if (V_VT(&element) == VT_I2) field = static_cast<WORD>(V_I2(&element));
    if (V_VT(&element) == VT_I4) field = static_cast<COLORREF>(V_I4(&element));
}

void Take(InputKind& field, const Variant& element)
{
    SHORT kind = -1;
    Take(kind, element);
    if (InRange(kind, 0, static_cast<SHORT>(InputKind::Folder)))
        field = static_cast<InputKind>(kind);
}

// What converts to a Date that the calendar has.
void Take(std::optional<SYSTEMTIME>& field, const Variant& element)
{
    Variant value;
    Check(VariantChangeType(&value, const_cast<Variant*>(&element), 0, VT_DATE));
    const std::optional<SYSTEMTIME> date = PartsOf(V_DATE(&value));
    if (date && date->wYear >= kFirstYear) field = date;
}

// Numbers, and texts as the user could enter them.
void Take(std::optional<double>& field, const Variant& element)
{
    if (V_VT(&element) == VT_BSTR) {
        field = NumberOf(ToText(element), UserDecimal());
    } else if (IsNumericType(V_VT(&element))) {
        Variant value;
        Check(VariantChangeType(&value, const_cast<Variant*>(&element), 0, VT_R8));
        if (std::isfinite(V_R8(&value))) field = V_R8(&value);
    }
}

// The elements of an array, those that are no texts as empty ones; the lines of a text, in which a
// NUL ends a line too, as it does in the filters of file dialogs.
void Take(std::vector<std::wstring>& field, const Variant& element)
{
    if (!ArrayOf(element)) {
        field = SplitLines(NulsToLineBreaks(ToText(element)));
        while (!field.empty() && field.back().empty())
            field.pop_back();
        return;
    }
    for (const Variant& item : ElementsOf(*ArrayOf(element), SIZE_MAX)) {
        std::wstring text;
        try {
            text = ToText(item).c_str();
        } catch (const AutomationError&) {
            text.clear();
        }
        field.push_back(std::move(text));
    }
}

// Gives one member of each field its element. What is no zero-based array is ignored as a whole,
// and so is each element that cannot be converted; those that are missing leave the defaults.
template <class Value>
void Distribute(std::vector<InputField>& fields, const VARIANT& given, Value InputField::*member)
{
    std::vector<Variant> elements;
    try {
        if (ElementCount(given) > 0) elements = ElementsOf(*ArrayOf(given), fields.size());
    } catch (const AutomationError&) {
        return;
    }
    for (size_t index = 0; index < elements.size(); ++index) {
        const Variant element = Variant::Dereferenced(elements[index]);
        if (V_VT(&element) == VT_EMPTY) continue;
        try {
            Take(fields[index].*member, element);
        } catch (const AutomationError&) {
            continue;
        }
    }
}

} // namespace

CREATABLE(MInputBox)

MInputBox::MInputBox()
{
    settings_.topmost = false;
    settings_.dlgCancelEsc = true;
}

std::wstring MInputBox::InputS(const std::wstring& prompt, const std::wstring& title,
                               const std::wstring& text)
{
    Showing showing(*this);
    answers_.clear();
    InputSettings input;
    input.bigInfo = input_.bigInfo;
    InputField field;
    field.label = prompt;
    field.text = text;
    const auto form = std::make_unique<frmMIB>(showing.Request(), input, std::vector{field});
    form->Ask(title, 0);
    answers_ = form->TakeAnswers();
    return form->Texts().front();
}

bool MInputBox::InputM(VARIANT& texts)
{
    Showing showing(*this);
    answers_.clear();
    if (IsArrayByReference(texts)) return false;
    const std::vector<InputField> fields = Fields();
    const bool convert = convertArr_;
    Assign(texts, Variant());
    // Kept as published: the interval is a 16-bit number of milliseconds.
    const LONG interval = cancelSeconds_ * 1000L;
    if (interval > SHRT_MAX) RaiseRuntimeError(RuntimeError::Overflow);
    InputSettings input = input_;
    input.columns = true;
    const auto form = std::make_unique<frmMIB>(showing.Request(), input, fields);
    const bool accepted = form->Ask(title_, static_cast<UINT>(interval));
    answers_ = form->TakeAnswers();
    Assign(texts, MakeStringArray(form->Texts(), convert));
    return accepted;
}

std::vector<InputField> MInputBox::Fields() const
{
    std::vector<InputField> fields(static_cast<size_t>(input_.number));
    Distribute(fields, inpLabel_, &InputField::label);
    Distribute(fields, inpText_, &InputField::text);
    Distribute(fields, inpCueText_, &InputField::cueText);
    Distribute(fields, inpTipText_, &InputField::tipText);
    Distribute(fields, inpTextStyle_, &InputField::textStyle);
    Distribute(fields, inpMaxLen_, &InputField::maxLen);
    Distribute(fields, inpMinLen_, &InputField::minLen);
    Distribute(fields, inpLocked_, &InputField::locked);
    Distribute(fields, inpLabelColor_, &InputField::labelColor);
    Distribute(fields, inpTextColor_, &InputField::textColor);
    Distribute(fields, inpText_, &InputField::checked);
    Distribute(fields, inpText_, &InputField::date);
    Distribute(fields, inpType_, &InputField::kind);
    Distribute(fields, inpItems_, &InputField::items);
    Distribute(fields, inpMin_, &InputField::min);
    Distribute(fields, inpMin_, &InputField::earliest);
    Distribute(fields, inpMax_, &InputField::max);
    Distribute(fields, inpMax_, &InputField::latest);
    Distribute(fields, inpRequired_, &InputField::required);
    Distribute(fields, inpSameAs_, &InputField::sameAs);
    Distribute(fields, inpPattern_, &InputField::pattern);
    Distribute(fields, inpErrorText_, &InputField::errorText);
    return fields;
}

Variant MInputBox::Values() const
{
    Array values = MakeArray(VT_VARIANT, answers_.size());
    const auto element = DataOf<VARIANT>(*values).begin();
    for (size_t index = 0; index < answers_.size(); ++index) {
        const Answer& answer = answers_[index];
        const auto* secret = std::get_if<Secret>(&answer);
        element[static_cast<ptrdiff_t>(index)] =
            (secret ? secret->Value() : Variant::Dereferenced(std::get<Variant>(answer))).Detach();
    }
    return Variant(std::move(values));
}

} // namespace quill
