#include "dialogs/MInputBox.h"

#include "core/Catalogue.h"
#include "core/quillfn.h"

namespace quill {

namespace {

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
        try {
            Take(fields[index].*member, Variant::Dereferenced(elements[index]));
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
    InputSettings input;
    input.bigInfo = input_.bigInfo;
    InputField field;
    field.label = prompt;
    field.text = text;
    const auto form = std::make_unique<frmMIB>(showing.Request(), input, std::vector{field});
    const bool accepted = form->Ask(title, 0);
    return accepted ? form->Texts().front() : std::wstring();
}

bool MInputBox::InputM(VARIANT& texts)
{
    Showing showing(*this);
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
    Assign(texts,
           MakeStringArray(accepted ? form->Texts() : std::vector<std::wstring>(fields.size()),
                           convert));
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
    return fields;
}

} // namespace quill
