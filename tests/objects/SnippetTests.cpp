// Runs the VBScript and JScript snippets of the documentation against the registered server, each
// in an engine of its own, with a WScript of ours that also connects events. Above a snippet whose
// windows the user answers stand the answers, one a line, as in the tables:
//
//     <!-- answers:
//     "Offices" ListBox {DOWN}{ENTER}
//     -->
//     ```vb
//
// "not run" in place of them, with the reason behind it, is for what cannot run here.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>

#include "core/MessagePump.h"
#include "core/Text.h"
#include "services/Bytes.h"
#include "support/CountedDispatch.h"
#include "support/Engine.h"
#include "support/EventListener.h"
#include "support/Remote.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

// Milliseconds: to the end of a snippet after its last answer, and in which it may sleep.
constexpr DWORD kSnippetDeadline = 15'000;
constexpr DWORD kSleepDeadline = 30'000;

struct Snippet {
    int line = 0; // of its fence
    Language language = Language::VbScript;
    std::wstring text;
    std::vector<std::wstring> answers;
};

std::wstring Widened(const std::string& text)
{
    return FromCodePage({text.begin(), text.end()}, CP_UTF8);
}

std::vector<Snippet> SnippetsOf(const std::filesystem::path& page)
{
    std::vector<Snippet> snippets;
    Snippet next;
    enum { Text, Code, OtherCode, Answers } place = Text;
    bool runs = true;
    std::ifstream file(page);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (place == Text && line.starts_with("<!-- answers:")) {
            place = Answers;
            line.erase(0, 13);
        } else if (place == Text && line.starts_with("<!-- not run:")) {
            runs = false;
        }
        if (place == Answers) {
            const size_t end = line.find("-->");
            std::string answer = line.substr(0, end);
            answer.erase(0, answer.find_first_not_of(' '));
            answer.erase(answer.find_last_not_of(' ') + 1);
            if (!answer.empty()) next.answers.push_back(Widened(answer));
            if (end != std::string::npos) place = Text;
        } else if (place == Text && line.starts_with("```")) {
            next.line = number;
            next.language = line == "```js" ? Language::JScript : Language::VbScript;
            place = runs && (line == "```vb" || line == "```js") ? Code : OtherCode;
        } else if (line == "```") {
            if (place == Code) snippets.push_back(std::move(next));
            next = {};
            runs = true;
            place = Text;
        } else if (place == Code) {
            next.text += Widened(line) + L"\r\n";
        }
    }
    return snippets;
}

// What snippets use of the script host.
class ScriptHost final : public CountedDispatch {
public:
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override
    {
        for (ids[0] = 1; ids[0] <= 3; ++ids[0])
            if (_wcsicmp(names[0], kNames[ids[0] - 1]) == 0) return S_OK;
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) noexcept override
    try {
        std::vector<Variant> given;
        for (UINT index = parameters->cArgs; index-- > 0;)
            given.push_back(Variant::Dereferenced(parameters->rgvarg[index]));
        if (id == 1) {
            for (Variant& value : given)
                printed_ += TextOf(value) + L' ';
            printed_ += L"| ";
        } else if (id == 2 && given.size() == 1) {
            Check(VariantChangeType(&given[0], &given[0], 0, VT_I4));
            const ULONGLONG end = GetTickCount64() + V_UI4(&given[0]);
            if (end > started_ + kSleepDeadline) return E_ABORT; // a loop without an end
            for (ULONGLONG now; (now = GetTickCount64()) < end;)
                WaitForMessages(static_cast<DWORD>(end - now));
        } else if (id == 3 && given.size() == 2) {
            const ComPtr<IDispatch> object = ObjectOf(TextOf(given[0])).Dispatch();
            listeners_.push_back(std::make_unique<EventListener>(
                object.Get(), [this, prefix = TextOf(given[1])](const HeardEvent& event) {
                    engine_->Call(prefix + event.name, event.arguments);
                }));
            if (result) *result = Variant(object.Get()).Detach();
        } else {
            return DISP_E_BADPARAMCOUNT;
        }
        return S_OK;
    } catch (const AutomationError& error) {
        return error.number;
    } catch (...) {
        return E_FAIL;
    }

    void Connect(Engine& engine) { engine_ = &engine; }
    void Disconnect() { listeners_.clear(); }
    const std::wstring& Printed() const { return printed_; }

private:
    static constexpr const wchar_t* kNames[] = {L"Echo", L"Sleep", L"CreateObject"};

    static std::wstring TextOf(Variant& value)
    {
        Check(VariantChangeType(&value, &value, VARIANT_ALPHABOOL, VT_BSTR));
        return {V_BSTR(&value), SysStringLen(V_BSTR(&value))};
    }

    const ULONGLONG started_ = GetTickCount64();
    Engine* engine_ = nullptr;
    std::wstring printed_;
    std::vector<std::unique_ptr<EventListener>> listeners_;
};

// The script's error; an empty text when it came to its end.
std::string RunSnippet(const Snippet& snippet)
{
    const ComPtr<ScriptHost> host(new ScriptHost);
    std::atomic<bool> ended = false;
    Robot robot([&](Desk& desk) {
        for (const std::wstring& answer : snippet.answers)
            desk.Act(answer);
        desk.WaitFor(
            L"the end of the snippet (is an answer missing?)", [&] { return ended.load(); },
            kSnippetDeadline);
    });
    ScriptError error;
    {
        Engine engine([&](const std::wstring&) { return ComPtr<IDispatch>(host.Get()); },
                      snippet.language);
        host->Connect(engine);
        engine.Add(L"WScript");
        error = engine.Run(snippet.text).error;
        host->Disconnect();
    }
    ended = true;
    const bool answered = robot.Finish();
    if (error.number == 0 && answered) return {};
    return std::string(error.number ? error.what() : "") + "\nprinted: " + Narrow(host->Printed());
}

std::vector<std::string> Pages()
{
    std::vector<std::string> names;
    if (_wgetenv(L"QUILL_SERVER"))
        for (const auto& entry : std::filesystem::directory_iterator(QUILL_DOCS))
            if (entry.path().extension() == ".md" && !SnippetsOf(entry.path()).empty())
                names.push_back(entry.path().stem().string());
    return names;
}

class SnippetTest : public testing::TestWithParam<std::string> {};

TEST_P(SnippetTest, ComesToItsEnd)
{
    const std::string path = QUILL_DOCS "/" + GetParam() + ".md";
    for (const Snippet& snippet : SnippetsOf(path)) {
        const std::string wrong = RunSnippet(snippet);
        if (!wrong.empty()) ADD_FAILURE_AT(path.c_str(), snippet.line) << wrong;
    }
}

// Without the registered server there are none.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SnippetTest);
INSTANTIATE_TEST_SUITE_P(Snippets, SnippetTest, testing::ValuesIn(Pages()), [](const auto& test) {
    std::string name = test.param;
    std::erase(name, '-');
    return name;
});

} // namespace
} // namespace quill::test
