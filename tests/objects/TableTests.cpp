// Runs the tables of tests/tables, each in an engine of its own. A line is
//
//     ? expression                    which must be True
//     ?? expression                   which must become True within some seconds
//     ! statement -> 8004033F text    which must raise this error of the table's class; ... at the
//                                     end stands for any, and without a text the number counts
//     > statement -> calls            which asks this of the platform (support/Stage.h)
//     < Class[:text] action           what the user does while the next line runs
//     & caption: statement            what the object's thread does meanwhile, once it waits and a
//                                     window of this caption is there
//     stage names                     the seams that are recorded from here on; a run against the
//                                     server ends here
//     ' comment                       or a blank line
//     end                             the last line
//
// and everything else that begins with a letter is a statement. A line that ends in " _" goes on,
// as do Sub and Function to their End. Classes are objects by their name (Make("Me") for those
// whose name the language has taken), and scripts know the members of support/Host.h. With
// QUILL_SERVER set, objects come from the registered server, and the examples are run too.
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "core/Text.h"
#include "services/Bytes.h"
#include "support/Engine.h"
#include "support/Host.h"
#include "support/Remote.h"
#include "support/Robot.h"
#include "support/Stage.h"

namespace quill::test {
namespace {

constexpr DWORD kPatience = 10'000; // milliseconds

struct Failure {
    int line;
    std::string text;
};

bool IsServerRun()
{
    return _wgetenv(L"QUILL_SERVER") != nullptr;
}

ComPtr<IDispatch> MakeObject(const std::wstring& name)
{
    return IsServerRun() ? Remote(name).Dispatch() : Stage::Make(name);
}

class Table {
public:
    explicit Table(std::wstring name)
        : name_(std::move(name)),
          host_(new Host([this](const std::wstring& statement) { RunBeside(statement); })),
          engine_([this](const std::wstring& item) {
              return item == L"Host" ? ComPtr<IDispatch>(host_.Get()) : MakeObject(item);
          })
    {
        host_->Add(L"Make", [](std::wstring item) { return Variant(MakeObject(item).Get()); });
        // Of the platform, in its place.
        host_->Add(L"Answer", Stage::Answer);
        engine_.Add(L"Host", true);
        for (const std::wstring& item : Stage::Classes())
            if (item != L"Me") engine_.Add(item);
    }

    std::vector<Failure> Run(std::istream& lines)
    {
        int number = 0;
        int checks = 0;
        bool ended = false;
        for (std::string line; std::getline(lines, line);) {
            ++number;
            const int begin = number;
            for (std::string more; line.ends_with(" _") && std::getline(lines, more); ++number)
                line.replace(line.size() - 1, 1,
                             more.substr(std::min(more.find_first_not_of(' '), more.size())));
            const bool block = line.starts_with("Sub ") || line.starts_with("Function ");
            for (std::string more;
                 block && line.find("End ") == std::string::npos && std::getline(lines, more);
                 ++number)
                line += '\n' + more;
            while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
                line.pop_back();
            if (line.empty() || line[0] == '\'') continue;
            if (ended) failures_.push_back({number, "behind the end: " + line});
            ended = line == "end";
            if (ended) continue;
            if (line[0] == '?' || line[0] == '!' || line[0] == '>') ++checks;
            if (line.starts_with("stage") && IsServerRun()) return failures_;
            std::string failure = RunLine(FromCodePage({line.begin(), line.end()}, CP_UTF8));
            failure += std::exchange(beside_, {});
            if (!failure.empty()) failures_.push_back({begin, line + "\n  " + failure});
        }
        if (!ended) failures_.push_back({number, "the table ends early"});
        if (checks == 0) failures_.push_back({number, "nothing was checked"});
        return failures_;
    }

private:
    // What is wrong; an empty text when all is well.
    std::string RunLine(const std::wstring& line)
    try {
        const std::wstring text =
            line.substr(std::min(line.find_first_not_of(L"?!<>& "), line.size()));
        if (line[0] == L'<') {
            actions_.push_back(Replaced(text));
            return {};
        }
        if (line[0] == L'&') {
            meanwhile_ = text;
            return {};
        }
        if (line.starts_with(L"stage")) {
            std::wistringstream names(line.substr(5));
            for (std::wstring name; names >> name;)
                stage_.Record(name);
            return {};
        }
        std::optional<DuringWait> during;
        if (const size_t colon = meanwhile_.find(L": "); colon != std::wstring::npos)
            during.emplace(
                [this, statement = meanwhile_.substr(colon + 2)] { RunBeside(statement); },
                meanwhile_.substr(0, colon));
        meanwhile_.clear();
        std::optional<Robot> robot;
        if (!actions_.empty())
            robot.emplace([actions = std::exchange(actions_, {})](Desk& desk) {
                for (const std::wstring& action : actions)
                    desk.Act(action);
            });
        if (line.starts_with(L"??")) PumpUntil([&] { return Expect(text).empty(); }, kPatience);
        if (line[0] == L'?') return Expect(text);
        if (line[0] == L'!') return ExpectError(text);
        if (line[0] == L'>') return ExpectCalls(text);
        if (!iswalpha(line[0])) return "unknown mark";
        return Raised(engine_.Run(text).error);
    } catch (const std::exception& error) {
        return error.what();
    }

    // In an event, or in the wait of another call.
    void RunBeside(const std::wstring& statement)
    {
        const ScriptError error = engine_.Run(statement).error;
        if (error.number != 0) beside_ += Narrow(statement) + ": " + error.what();
    }

    // The parts of an expression between these words, outside of quotation marks and brackets.
    static std::vector<std::wstring> PartsOf(const std::wstring& expression,
                                             std::wstring_view separator)
    {
        std::vector<std::wstring> parts(1);
        bool quoted = false;
        int depth = 0;
        for (size_t index = 0; index < expression.size(); ++index) {
            const wchar_t unit = expression[index];
            if (unit == L'"') quoted = !quoted;
            if (!quoted && (unit == L'(' || unit == L')')) depth += unit == L'(' ? 1 : -1;
            if (!quoted && depth == 0 &&
                expression.compare(index, separator.size(), separator) == 0) {
                parts.emplace_back();
                index += separator.size() - 1;
            } else {
                parts.back() += unit;
            }
        }
        return parts;
    }

    // Both sides of And, and of an equation, are evaluated by themselves: the language's own
    // comparison passes over some characters, a NUL among them.
    std::string Expect(const std::wstring& expression)
    {
        if (PartsOf(expression, L" Or ").size() > 1) return ExpectTrue(expression);
        for (const std::wstring& part : PartsOf(expression, L" And ")) {
            const auto sides = PartsOf(part, L" = ");
            const std::string failure = sides.size() == 2 && !part.starts_with(L"Not ")
                                            ? ExpectEqual(sides[0], sides[1])
                                            : ExpectTrue(part);
            if (!failure.empty()) return failure;
        }
        return {};
    }
    std::string ExpectTrue(const std::wstring& expression)
    {
        const Outcome outcome = engine_.Evaluate(expression);
        if (outcome.error.number) return Raised(outcome.error);
        if (V_VT(&outcome.value) == VT_BOOL && V_BOOL(&outcome.value)) return {};
        return Narrow(expression + L" is " + TextOf(outcome.value));
    }
    std::string ExpectEqual(const std::wstring& left, const std::wstring& right)
    {
        const Outcome actual = engine_.Evaluate(left);
        if (actual.error.number) return Raised(actual.error);
        const Outcome expected = engine_.Evaluate(right);
        if (expected.error.number) return Raised(expected.error);
        const auto isText = [](const Outcome& side) { return V_VT(&side.value) == VT_BSTR; };
        const bool same = isText(actual) && isText(expected)
                              ? TextOf(actual.value) == TextOf(expected.value)
                              : isText(actual) == isText(expected) &&
                                    VarCmp(const_cast<Variant*>(&actual.value),
                                           const_cast<Variant*>(&expected.value), LOCALE_INVARIANT,
                                           0) == static_cast<HRESULT>(VARCMP_EQ);
        return same ? std::string() : Narrow(left + L" is " + TextOf(actual.value));
    }

    std::string ExpectError(const std::wstring& line)
    {
        const size_t arrow = line.rfind(L" -> ");
        if (arrow == std::wstring::npos) return "-> is missing";
        const std::wstring expected = Replaced(line.substr(arrow + 4));
        const ScriptError error = engine_.Run(line.substr(0, arrow)).error;
        if (error.number != std::wcstoul(expected.c_str(), nullptr, 16)) return Raised(error, true);
        if (expected.size() <= 9) return {};
        std::wstring text = expected.substr(9);
        const bool whole = !text.ends_with(L"...");
        if (!whole) text.resize(text.size() - 3);
        const bool same = error.source == L"Quill." + name_ &&
                          error.description.starts_with(text) &&
                          (!whole || error.description.size() == text.size());
        return same ? std::string() : Raised(error, true);
    }

    std::string ExpectCalls(const std::wstring& line)
    {
        const size_t arrow = line.rfind(L" ->");
        if (arrow == std::wstring::npos) return "-> is missing";
        stage_.Told();
        const std::string raised = Raised(engine_.Run(line.substr(0, arrow)).error);
        const std::wstring expected = Replaced(line.substr(std::min(arrow + 4, line.size())));
        std::wstring told; // some of it by other threads
        PumpUntil([&] { return !expected.starts_with(told += stage_.Told()) || told == expected; });
        return told == expected ? raised : raised + "asks: " + Narrow(told);
    }

    // With {folder} and {crlf} replaced.
    std::wstring Replaced(std::wstring text) const
    {
        for (const auto& [name, value] :
             {std::pair<std::wstring, std::wstring>{L"{folder}", host_->folder.Path(L"")},
              {L"{crlf}", L"\r\n"}})
            if (const size_t place = text.find(name); place != std::wstring::npos)
                text.replace(place, name.size(), value);
        return text;
    }

    static std::string Raised(const ScriptError& error, bool wanted = false)
    {
        if (error.number == 0) return wanted ? "raises nothing" : "";
        return error.what();
    }

    const std::wstring name_;
    Stage stage_;
    const ComPtr<Host> host_;
    Engine engine_;
    std::vector<std::wstring> actions_;
    std::wstring meanwhile_;
    std::string beside_; // what went wrong there
    std::vector<Failure> failures_;
};
std::vector<std::string> TableNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(QUILL_TABLES))
        if (IsServerRun() || entry.path().stem() != "Examples")
            names.push_back(entry.path().stem().string());
    if (!IsServerRun()) names.push_back("Contract");
    return names;
}

class TableTest : public testing::TestWithParam<std::string> {};

TEST_P(TableTest, Holds)
{
    const std::string path =
        (GetParam() == "Contract" ? QUILL_CONTRACT : QUILL_TABLES) + ("/" + GetParam()) + ".txt";
    std::ifstream file(path);
    Table table(std::wstring(GetParam().begin(), GetParam().end()));
    for (const Failure& failure : table.Run(file))
        ADD_FAILURE_AT(path.c_str(), failure.line) << failure.text;
}

INSTANTIATE_TEST_SUITE_P(Tables, TableTest, testing::ValuesIn(TableNames()),
                         [](const auto& test) { return test.param; });

TEST(TableRunnerTest, KnowsEveryExample)
{
    std::ifstream file(QUILL_TABLES "/Examples.txt");
    const std::string table(std::istreambuf_iterator<char>(file), {});
    for (const auto& entry : std::filesystem::directory_iterator(QUILL_EXAMPLES))
        EXPECT_NE(table.find("Run(\"" + entry.path().filename().string() + '"'), std::string::npos)
            << entry.path();
}

TEST(TableRunnerTest, SaysWhatIsWrongWithATable)
{
    const std::pair<const char*, const char*> cases[] = {
        {"? 1 = 1\nend\n", ""},
        {"? 1 + 1 = 3\nend", "1:? 1 + 1 = 3\n  1 + 1 is 2;"},
        {"? \"a\" & nul = \"a\"\nend", "1:"}, // texts are compared by their units
        {"? 1\n? 1 = 1\nend", "1:? 1\n  1 is 1;"},
        {"? Profile.Nothing\n? 1 = 1\nend", "1:? Profile.Nothing\n  error 0x800a01b6 from"},
        {"? 1 = 1\n\nx = (\n? 1 = 1\nend", "3:x = (\n  error 0x80"},
        {"? 1 = 1\n~ 1\nend", "2:~ 1\n  unknown mark;"},
        {"! x = 1\nend", "1:! x = 1\n  -> is missing;"},
        {"! x = 1 -> 800A000D\nend", "1:! x = 1 -> 800A000D\n  raises nothing;"},
        {"! Profile.GetValue \"a\", \"b\" -> 80040340 No\nend", "1:! Profile"},
        {"! Profile.GetValue \"a\", \"b\" -> 80040340 No Profile defined.\nend", ""},
        {"? 1 = 1\n", "1:the table ends early;"},
        {"end\n? 1 = 1\nend", "2:behind the end: ? 1 = 1;"},
        {"? 1 = _\n  1\n? 1 = _\n  2\nend", "3:? 1 = 2\n  1 is 1;"},
        {"stage box\n> x = MessageBox.Show(\"a\", 1) -> box 1 : a\nend", ""},
        {"stage box\n> MessageBox.Show \"a\" -> box 1 : a\nend", "2:> MessageBox.Show \"a\""},
        {"stage bix\n? 1 = 1\nend", "1:stage bix\n  no seam bix;"},
        {"x = 1\nend", "2:nothing was checked;"},
        {"", "0:the table ends early;0:nothing was checked;"},
    };
    for (const auto& [lines, expected] : cases) {
        std::istringstream input(lines);
        std::string failures;
        for (const Failure& failure : Table(L"Profile").Run(input))
            failures += std::to_string(failure.line) + ':' + failure.text + ';';
        EXPECT_TRUE(*expected ? failures.starts_with(expected) : failures.empty())
            << lines << "\ngives " << failures;
    }
}

} // namespace
} // namespace quill::test
