#include <gtest/gtest.h>

#include <cmath>

#include "dialogs/Choices.h"
#include "services/Lists.h"
#include "support/CountedDispatch.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

std::wstring Rows(const Choices& choices)
{
    std::wstring texts;
    for (size_t row = 0; row < choices.Rows(); ++row)
        texts += std::wstring(choices.Text(choices.LineOf(row))) + L'|';
    return texts;
}

TEST(Choices, SortsAndFiltersTogether)
{
    Choices choices(std::wstring(L"b\t10\r\n\r\na\t9\r\nc\r\nB\t9\tx\r\nd\t1.5"));
    choices.SetColumns(2);
    choices.SortBy(0);
    EXPECT_EQ(Rows(choices), L"a\t9|b\t10|B\t9\tx|c|d\t1.5|") << "equal ones as they came";
    choices.SortBy(1);
    EXPECT_EQ(Rows(choices), L"d\t1.5|a\t9|b\t10|c|B\t9\tx|") << "numbers before texts";
    choices.SetFilter(L"  B ");
    EXPECT_EQ(Rows(choices), L"b\t10|B\t9\tx|");
    choices.SortBy(1);
    EXPECT_EQ(Rows(choices), L"B\t9\tx|b\t10|");
    choices.SetFilter({});
    EXPECT_EQ(choices.Rows(), 5U);
    EXPECT_EQ(choices.Cell(3, 1), L"9\tx") << "the last column takes the rest";
    EXPECT_EQ(choices.Cell(2, 1), L"");
}

TEST(Choices, FindsABeginningAndGoesOnAtTheTop)
{
    Choices choices(std::wstring(L"pear\r\nplum\r\nPeach"));
    EXPECT_EQ(choices.FindRow(L"pe", 1), 2U);
    EXPECT_EQ(choices.FindRow(L"PL", 2), 1U);
    EXPECT_EQ(choices.FindRow(L"x", 0), std::nullopt);
}

// What scripts hand over as an array: objects with a length, honest ones or not.
class Members final : public CountedDispatch {
public:
    Members(double length, int real, int raising = -1)
        : length_(length), real_(real), raising_(raising)
    {
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override
    {
        ids[0] = wcscmp(names[0], L"length") == 0 ? -10 : _wtoi(names[0]);
        return ids[0] < real_ ? S_OK : DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                        UINT*) noexcept override
    {
        if (id == raising_) return DISP_E_EXCEPTION;
        *result = (id < 0 ? Variant(length_) : Variant(static_cast<LONG>(id))).Detach();
        return S_OK;
    }

private:
    const double length_;
    const int real_, raising_;
};

TEST(ElementsOfAny, ReadsObjectsWithALength)
{
    const auto count = [](double length, int real, int raising = -1) {
        const ComPtr<IDispatch> object(new Members(length, real, raising));
        const auto elements = ElementsOfAny(Variant(object.Get()), kMostElements);
        return elements ? static_cast<int>(elements->size()) : -1;
    };
    EXPECT_EQ(count(3, 3), 3);
    EXPECT_EQ(count(3, 1), 3) << "missing ones are Empty";
    EXPECT_EQ(count(3, 3, 2), -1) << "one that raises";
    EXPECT_EQ(count(3, 3, -10), -1) << "a length that raises";
    EXPECT_EQ(count(-1, 3), -1);
    EXPECT_EQ(count(4e9, 3), -1);
    EXPECT_EQ(count(NAN, 3), -1);
}

} // namespace
} // namespace quill::test
