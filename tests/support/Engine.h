// One of the platform's script engines, in the test's own process.
//
//     Engine engine([](const std::wstring& name) { return ...; });
//     engine.Add(L"Profile");
//     engine.Run(L"Profile.File = \"a.ini\"");
//     engine.Evaluate(L"Profile.GetValue(\"one\", \"a\") = \"1\"").value
#pragma once

#include <functional>

#include "support/LateBound.h"

#include <activscp.h>

namespace quill::test {

// What a piece of script came to: an error, or else the value of an expression.
struct Outcome {
    ScriptError error;
    Variant value;
};

class Engine {
public:
    // Makes the object of a name when the script first uses it.
    using Maker = std::function<ComPtr<IDispatch>(const std::wstring& name)>;

    explicit Engine(Maker maker, const wchar_t* language = L"VBScript"); // throws AutomationError
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // A name that scripts know; with `global`, so are the members of its object.
    void Add(const std::wstring& name, bool global = false);

    // Variables live as long as the engine, which goes on after an error.
    Outcome Run(const std::wstring& text) { return Parse(text, SCRIPTTEXT_ISVISIBLE); }
    Outcome Evaluate(const std::wstring& text) { return Parse(text, SCRIPTTEXT_ISEXPRESSION); }

    // Calls a procedure of the script; nothing happens without one of this name.
    void Call(const std::wstring& procedure, const std::vector<Variant>& arguments);

private:
    class Site;

    Outcome Parse(const std::wstring& text, DWORD flags);

    ComPtr<Site> site_;
    ComPtr<IActiveScript> script_;
};

} // namespace quill::test
