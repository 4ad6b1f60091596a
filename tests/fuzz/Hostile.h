// What a call is given: values of every type, at and beyond the limits of what they stand for.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/Variant.h"
#include "support/CountedDispatch.h"
#include "support/LateBound.h"

namespace quill::fuzz {

// The same numbers for the same seed, with every compiler.
class Random : public std::mt19937 {
public:
    using std::mt19937::mt19937;

    std::uint32_t Below(std::uint32_t limit)
    {
        return static_cast<std::uint32_t>((*this)()) % limit;
    }
    bool Percent(std::uint32_t chance) { return Below(100) < chance; }
    template <class List>
    const auto& Pick(const List& list)
    {
        return std::data(list)[Below(static_cast<std::uint32_t>(std::size(list)))];
    }
};

using namespace std::string_view_literals;

// clang-format off
inline constexpr LONGLONG kNumbers[] = {
    0, 1, -1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 16, 17, 30, 31, 32, 33, 48, 63, 64, 65, 100, 101, 127, 128,
    255, 256, 257, 1023, 1024, 1025, 3600, 3601, 32512, 32518, 32767, 32768, -32768, -32769, 65001,
    65535, 65536, -5, 0x7FFFFFFF, 1 << 30, INT32_MIN, 1LL << 31, 0xFFFFFFFF, 1LL << 53, INT64_MAX,
    INT64_MIN};

// With the last second that a date can be.
inline constexpr double kFractions[] = {
    0.5, -0.5, 1.5, -0.0, 36526.25, 2958465.999988426, 2958466, -657434, -657435, 1e308, -1e308, 1e-310,
    std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()};

// Texts that mean something to one class or another. Paths are relative to the folder of the run,
// or name nothing that exists.
inline constexpr std::wstring_view kTexts[] = {
    L"", L" ", L"a", L"0", L"7", L"-1", L" 12 ", L"1e400", L"&H7F", L"2024-02-30", L"12:30",
    L"True", L"\x0663\x0664", L"a\r\nb\r\nc", L"\r\n\r\n", L"\n\r", L"a=b\r\nc", L"&File|*.*|",
    L"Text\0*.txt\0All\0*.*\0\0"sv, L"hidden\0behind"sv, L"\0"sv, L"\0\0\0"sv, L"%s%n%1!s!%%n%",
    L"%PATH%%NOTHING%%", L"{0}\\u0041\\", L"*?*?*", L"*a*b*c*d*e*f*g", L"[a-", L";;;",
    L"<b>&amp;", L"\xD800", L"x\xDC00y", L"\xD83D\xDE00", L"\x202Eolleh",
    L"\x05E9\x05DC\x05D5\x05DD", L"\x65E5\x672C\x8A9E", L"e\x0301\x0302\x0303", L"\xFFFF\xFEFF",
    L"CON", L"nul", L"aux.txt", L"..\\..", L"..\\..\\up.txt", L".", L"\\\\.\\", L"\\\\?\\",
    L"\\\\.\\pipe\\quillfuzz", L"\\\\nohost\\share\\x", L"Q:\\", L"Q:x", L"C", L"C:", L"a:b:c",
    L"text.txt", L".\\text.txt", L".\\values.ini", L"bytes.bin", L".\\icon.ico",
    L".\\program.exe", L"*.txt", L"new.txt", L"backup.txt", L"section", L"key",
    L"HKEY_CURRENT_USER\\", L"HKCU\\Software\\Wine",
    L"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion",
    L"HKEY_LOCAL_MACHINE\\System\\\\", L"HKEY_NONE\\x", L"HKEY_CLASSES_ROOT\\.txt\\", L"\\\\\\",
    L"MD5", L"SHA1", L"SHA256", L"00ff 7F", L"0", L"zz", L"QUJD", L"QQ==", L"====",
    L"http://u:p@host:80/p/a?q=1#f", L"file:///Q:/a%20b", L"%zz%C3%28%", L"http://[::1", L"//",
    L"shell32.dll", L"comctl32.dll", L"#1", L"#99999", L"SystemAsterisk", L"-", L"- -", L"\t"};

inline constexpr VARTYPE kNumberTypes[] = {
    VT_I1, VT_I2, VT_I4, VT_I8, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_INT, VT_UINT, VT_R4, VT_R8, VT_CY,
    VT_DATE, VT_BOOL, VT_DECIMAL, VT_ERROR};
inline constexpr VARTYPE kElementTypes[] = {
    VT_VARIANT, VT_VARIANT, VT_VARIANT, VT_BSTR, VT_UI1, VT_UI1, VT_I1, VT_I2, VT_I4, VT_R4, VT_R8,
    VT_CY, VT_DATE, VT_BOOL, VT_ERROR, VT_UI2, VT_UI4, VT_INT, VT_UINT, VT_DECIMAL, VT_DISPATCH,
    VT_UNKNOWN};
// clang-format on

// A script's object: its value may be a number, a text, an array, itself, an error, or a call back.
// As a sink it answers every event so.
class ScriptObject final : public test::CountedDispatch {
public:
    ScriptObject(std::uint32_t kind, const std::function<void()>& callBack)
        : kind_(kind), callBack_(callBack)
    {
    }

    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                        EXCEPINFO* exception, UINT*) noexcept override
    {
        const ComPtr<IDispatch> self(this);
        Variant value;
        switch (kind_) {
        case 1:
            if (exception)
                *exception = {0, 0, nullptr, nullptr, nullptr, 0, nullptr, nullptr, E_FAIL};
            return DISP_E_EXCEPTION;
        case 2: value = Variant(5L); break;
        case 3: value = Variant(L"text\0more"sv); break;
        case 4:
            if (++asked_ > 3) return E_FAIL;
            value = Variant(static_cast<IDispatch*>(this));
            break;
        case 5: callBack_(); break;
        case 6: value = Variant(MakeArray(VT_VARIANT, 3)); break;
        default: return DISP_E_MEMBERNOTFOUND;
        }
        if (result) *result = value.Detach();
        return S_OK;
    }

private:
    // A sink of any events.
    bool IsAlso(REFIID id) const noexcept override
    {
        const bool known = id == IID_IMarshal || id == IID_IProvideClassInfo ||
                           id == IID_IStdMarshalInfo || id == IID_IExternalConnection ||
                           id == IID_IAgileObject;
        return kind_ == 0 ? !known : id == IID_IDispatch;
    }

    const std::uint32_t kind_;
    int asked_ = 0;
    const std::function<void()>& callBack_;
};

// The arguments of one call, with all that they refer to.
class Arguments {
public:
    // `objects` may be passed, too; `callBack` is what an object of a script does when it is asked
    // for its value.
    Arguments(Random& random, std::span<const ComPtr<IDispatch>> objects,
              const std::function<void()>& callBack)
        : random_(random), objects_(objects), callBack_(callBack)
    {
    }

    // One more, behind the others: what a parameter of this type takes when `exact`, else anything.
    void Add(VARTYPE type, bool exact)
    {
        Variant value = exact || random_.Percent(50) ? OfType(type) : Any(0);
        // Wine copies what a Variant is given by value, or by a variable with a type, and forgets
        // the copy when it refuses the call for another argument.
        if (type == VT_VARIANT ? !exact || random_.Percent(50) : !exact && random_.Percent(30)) {
            Variant& variable = referred_.emplace_back(std::move(value));
            const VARTYPE kind = V_VT(&variable);
            const bool typed =
                (exact || type != VT_VARIANT) && kind > VT_NULL && random_.Percent(40);
            void* place = &variable;
            if (typed && kind != VT_DECIMAL) place = &V_UI1(&variable);
            value = test::Reference(typed ? kind : +VT_VARIANT, place);
        }
        values.push_back(std::move(value));
    }
    void Add(std::wstring_view text) { values.emplace_back(text); }

    std::vector<VARIANT> Reversed() const { return {values.rbegin(), values.rend()}; }

    std::vector<Variant> values;

private:
    ComPtr<IDispatch> MakeObject() { return new ScriptObject(random_.Below(7), callBack_); }
    std::wstring Text()
    {
        if (random_.Percent(70)) return std::wstring(random_.Pick(kTexts));
        std::wstring text(random_.Below(random_.Percent(50) ? 12 : 600), L'\0');
        const std::uint32_t alphabet = random_.Percent(50) ? 0x80 : 0x10000;
        for (wchar_t& unit : text)
            unit = static_cast<wchar_t>(random_.Below(alphabet));
        if (random_.Percent(10))
            for (text = random_.Pick(kTexts); text.size() < 100'000;)
                text += text.empty() ? L"x" : text;
        // No other path than those above, and no long one: the platform takes seconds for its
        // parts.
        std::ranges::replace_if(
            text, [](wchar_t unit) { return unit == L'\\' || unit == L'/' || unit == L':'; }, L'_');
        return text;
    }

    Variant Number(VARTYPE type)
    {
        Variant value;
        const LONGLONG number =
            random_.Percent(85) ? random_.Pick(kNumbers) : static_cast<LONG>(random_());
        const double fraction =
            random_.Percent(50) ? static_cast<double>(number) : random_.Pick(kFractions);
        V_I8(&value) = number;
        if (type == VT_R4) V_R4(&value) = static_cast<float>(std::clamp(fraction, -3e38, 3e38));
        if (type == VT_R8 || type == VT_DATE) V_R8(&value) = fraction;
        if (type == VT_BOOL && random_.Percent(80)) V_BOOL(&value) = random_.Percent(50) ? -1 : 0;
        if (type == VT_CY && random_.Percent(50))
            V_I8(&value) = std::clamp<LONGLONG>(number, -99, 99) * 10'000;
        if (type == VT_DECIMAL) {
            DECIMAL decimal{};
            decimal.Lo64 = static_cast<ULONGLONG>(number);
            decimal.scale = static_cast<BYTE>(random_.Below(29));
            decimal.sign = random_.Percent(50) ? DECIMAL_NEG : 0;
            V_DECIMAL(&value) = decimal;
        }
        V_VT(&value) = type;
        return value;
    }

    Variant AnyObject()
    {
        if (!objects_.empty() && random_.Percent(30)) return Variant(random_.Pick(objects_).Get());
        const bool null = random_.Percent(20);
        Variant value(null ? nullptr : MakeObject().Get());
        if (random_.Percent(20)) V_VT(&value) = VT_UNKNOWN;
        return value;
    }

    Variant AnyArray(int depth)
    {
        constexpr LONG kBounds[] = {0, 0, 0, 0, 0, 0, 1, -5, INT32_MIN, 2'147'480'000};
        constexpr ULONG kCounts[] = {0, 1, 1, 2, 3, 3, 10, 11, 33, 300};
        constexpr UINT kDimensions[] = {1, 1, 1, 1, 1, 1, 1, 1, 2, 60};

        const VARTYPE type = random_.Pick(kElementTypes);
        Variant value;
        V_VT(&value) = static_cast<VARTYPE>(VT_ARRAY | type);
        if (random_.Percent(5)) return value; // null
        std::vector<SAFEARRAYBOUND> bounds(random_.Pick(kDimensions));
        ULONG count = 1;
        for (SAFEARRAYBOUND& bound : bounds) {
            bound = {bounds.size() > 2 ? 1 : random_.Pick(kCounts), random_.Pick(kBounds)};
            if (type == VT_UI1 && bounds.size() == 1 && random_.Percent(3))
                bound.cElements = 1 << 20;
            count *= bound.cElements;
        }
        SAFEARRAY* array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
        if (!array) throw std::bad_alloc();
        V_ARRAY(&value) = array;

        for (ULONG index = 0; index < std::min<ULONG>(count, 40); ++index) {
            BYTE* const element = static_cast<BYTE*>(array->pvData) + index * array->cbElements;
            if (type == VT_VARIANT)
                *reinterpret_cast<VARIANT*>(element) =
                    (random_.Percent(60) ? Variant(Text()) : Any(depth + 1)).Detach();
            else if (type == VT_BSTR)
                *reinterpret_cast<BSTR*>(element) = MakeBstr(Text()).release();
            else if (type == VT_DISPATCH || type == VT_UNKNOWN)
                *reinterpret_cast<IDispatch**>(element) = MakeObject().Detach();
            else if (type != VT_DECIMAL) {
                const Variant number = Number(type);
                std::copy_n(&V_UI1(&number), array->cbElements, element);
            }
        }
        return value;
    }

    // What a careful script would pass, and its boundaries.
    Variant OfType(VARTYPE type)
    {
        if (type == VT_BSTR) return Variant(Text());
        if (type == VT_VARIANT) return random_.Percent(50) ? AnyArray(0) : Any(0);
        return Number(type);
    }

    Variant Any(int depth)
    {
        Variant value;
        switch (random_.Below(depth > 2 ? 6 : 9)) {
        case 0: V_VT(&value) = random_.Percent(50) ? VT_EMPTY : VT_NULL; return value;
        case 1: V_VT(&value) = VT_BSTR; return value; // null
        case 2: return Variant(Text());
        case 3:
            V_VT(&value) = VT_ERROR;
            V_ERROR(&value) = DISP_E_PARAMNOTFOUND;
            return value;
        case 4:
        case 5: return Number(random_.Pick(kNumberTypes));
        case 6: return AnyObject();
        default: return AnyArray(depth);
        }
    }

    Random& random_;
    std::span<const ComPtr<IDispatch>> objects_;
    const std::function<void()>& callBack_;
    std::deque<Variant> referred_; // stay where they are
};

} // namespace quill::fuzz
