// Automation objects made of functions: the arguments of a member become what its function takes,
// and what that returns becomes the member's value.
//
//     Add(L"Caption", Desk::TextOf);
//     Add(L"Delete", [](std::wstring path) { return DeleteFileW(path.c_str()) != FALSE; });
#pragma once

#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/Variant.h"
#include "support/CountedDispatch.h"

namespace quill::test {

// As a script shows it; what has no text is its type in <>.
std::wstring TextOf(const VARIANT& value);

// The window of a handle, or of a text: the caption or the class of a top-level window, or that, >
// and a child's class, class:text or class#number, from 1.
HWND WindowOf(const VARIANT& window);

class Members : public CountedDispatch {
public:
    template <class Function>
    void Add(const wchar_t* name, Function function)
    {
        members_.emplace_back(name, Taking(std::function(std::move(function))));
    }

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override;
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) noexcept override;

private:
    using Arguments = std::vector<Variant>; // behind references
    using Member = std::function<Variant(Arguments& given)>;

    template <class T>
    static T As(const Variant& value)
    {
        if constexpr (std::is_same_v<T, std::wstring>) {
            return TextOf(value);
        } else if constexpr (std::is_same_v<T, HWND>) {
            return WindowOf(value);
        } else if constexpr (std::is_same_v<T, IDispatch*>) {
            return V_DISPATCH(&value);
        } else if constexpr (std::is_same_v<T, Variant>) {
            return Variant::Dereferenced(value);
        } else {
            Variant number;
            Check(VariantChangeType(&number, const_cast<Variant*>(&value), 0, VT_I4));
            return static_cast<T>(V_I4(&number));
        }
    }

    template <class Result, class... Taken>
    static Member Taking(std::function<Result(Taken...)> function)
    {
        return [function = std::move(function)](Arguments& given) {
            std::tuple<std::decay_t<Taken>...> arguments;
            if constexpr (std::is_same_v<decltype(arguments), std::tuple<Arguments>>) {
                std::get<0>(arguments) = std::move(given); // of any number
            } else {
                if (given.size() != sizeof...(Taken)) Check(DISP_E_BADPARAMCOUNT);
                [[maybe_unused]] auto next = given.begin();
                arguments = {As<std::decay_t<Taken>>(*next++)...};
            }
            if constexpr (std::is_void_v<Result>)
                return std::apply(function, std::move(arguments)), Variant();
            else if constexpr (std::is_integral_v<Result> && !std::is_same_v<Result, bool>)
                return Variant(static_cast<LONG>(std::apply(function, std::move(arguments))));
            else
                return Variant(std::apply(function, std::move(arguments)));
        };
    }

    std::vector<std::pair<std::wstring, Member>> members_;
};

} // namespace quill::test
