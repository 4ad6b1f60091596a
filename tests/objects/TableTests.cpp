// Runs the tables of tests/tables, each in an engine of its own. A line is
//
//     ? expression                    which must be True
//     ?? expression                   which must become True within some seconds
//     ! statement -> 8004033F text    which must raise this error of the table's class; ... at the
//                                     end stands for any, and without a text the number counts.
//                                     Statements with " | " between them raise the same
//     > statement -> calls            which asks this of the platform (support/Stage.h)
//     < Class[:text] action           what the user does while the next line runs; as the last
//                                     part of a line <- Class[:text] action
//     & caption: statement            what the object's thread does meanwhile, once it waits and a
//                                     window of this caption is there
//     each names                      the lines up to "next" run for each of these words, which is
//     next                            {it} in them
//     stage names                     the seams that are recorded from here on; a run against the
//                                     server ends here
//     ' comment                       or a blank line
//     end                             the last line
//
// and everything else that begins with a letter is a statement. What is done and what comes of it
// can share a line, with " => " between them. A line that ends in " _" goes on, as do Sub and
// Function to their End. Classes are objects by their name (Make("Me") for those
// whose name the language has taken), and scripts know the members of support/Host.h. With
// QUILL_SERVER set, objects come from the registered server, and its clients, the examples and the
// snippets of the pages run too.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <utility>

#include "core/Text.h"
#include "support/Engine.h"
#include "support/Host.h"
#include "support/Remote.h"
#include "support/Robot.h"
#include "support/Stage.h"

namespace quill::test {
namespace {

constexpr DWORD kPatience = 60'000;  // milliseconds
const std::regex kName(R"(\{it\})"); // the word of "each"

using Failure = std::pair<int, std::string>; // the line, and what is wrong

bool IsServerRun()
{
    return _wgetenv(L"QUILL_SERVER") != nullptr;
}

ComPtr<IDispatch> MakeObject(const std::wstring& name)
{
    return IsServerRun() ? Remote(name) : Stage::Make(name);
}

// The parts of an expression between these words, outside of quotation marks and brackets.
std::vector<std::wstring> PartsOf(const std::wstring& expression, std::wstring_view separator)
{
    std::vector<std::wstring> parts(1);
    bool quoted = false;
    int depth = 0;
    for (size_t index = 0; index < expression.size(); ++index) {
        const wchar_t unit = expression[index];
        if (unit == L'"') quoted = !quoted;
        if (!quoted) depth += (unit == L'(') - (unit == L')');
        if (!quoted && depth == 0 && expression.compare(index, separator.size(), separator) == 0) {
            parts.emplace_back();
            index += separator.size() - 1;
        } else {
            parts.back() += unit;
        }
    }
    return parts;
}

struct Line {
    int number;
    std::string text;
};

// Lines that go on are one, and those below "each" are there once for each of its words.
std::vector<Line> LinesOf(std::istream& input)
{
    std::vector<Line> lines;
    std::istringstream names;
    size_t first = 0; // below "each"
    int number = 0;
    for (std::string line, more; std::getline(input, line);) {
        const int begin = ++number;
        const auto goesOn = [&] { return std::getline(input, more) && ++number; };
        while (line.ends_with(" _") && goesOn())
            line.replace(line.size() - 1, 1, more,
                         std::min(more.find_first_not_of(' '), more.size()));
        if (line.starts_with("Sub ") || line.starts_with("Function "))
            while (line.find("End ") == std::string::npos && goesOn())
                line += '\n' + more;
        line.erase(line.find_last_not_of(" \r") + 1);
        if (line.starts_with("each ")) {
            names = std::istringstream(line.substr(5));
            first = lines.size();
        } else if (line == "next") {
            const std::vector<Line> below(lines.begin() + static_cast<ptrdiff_t>(first),
                                          lines.end());
            lines.resize(first);
            for (std::string name; names >> name;)
                for (const Line& each : below)
                    lines.emplace_back(each.number, std::regex_replace(each.text, kName, name));
        } else if (!line.empty() && line[0] != '\'') {
            lines.emplace_back(begin, line);
        }
    }
    return lines;
}

class Table {
public:
    explicit Table(std::wstring name)
        : name_(std::move(name)),
          host_(new Host([this](const std::wstring& statement) { // in an event
              EXPECT_EQ(Raised(engine_.Run(statement).error), "") << Narrow(statement);
          })),
          engine_([this](const std::wstring& item) {
              return item == L"Host" ? ComPtr<IDispatch>(host_.Get()) : MakeObject(item);
          })
    {
        host_->Add(L"Make", [](std::wstring item) { return Variant(MakeObject(item).Get()); });
        // Of the platform, in its place.
        host_->Add(L"Answer", Stage::Answer);
        host_->Add(L"Register", Stage::Register); // for the current user, or for all
        host_->Add(L"Unregister", Stage::Unregister);
        engine_.Add(L"Host", true);
        for (const std::wstring& item : Stage::Classes())
            if (item != L"Me") engine_.Add(item);
    }

    std::vector<Failure> Run(std::istream& lines)
    {
        std::vector<Failure> failures;
        int checks = 0;
        bool ended = false;
        int last = 0;
        for (const auto& [number, line] : LinesOf(lines)) {
            last = number;
            if (ended) failures.emplace_back(number, "behind the end: " + line);
            ended = ended || line == "end";
            if (ended) continue;
            if (line.starts_with("stage") && IsServerRun()) return failures;
            std::string failure;
            for (const std::wstring& part : PartsOf(Decode(line, CP_UTF8), L" => ")) {
                if (part.find_first_of(L"?!>") == 0) ++checks;
                failure += RunLine(part);
            }
            if (!failure.empty()) failures.emplace_back(number, line + "\n  " + failure);
        }
        if (!ended) failures.emplace_back(last, "the table ends early");
        if (checks == 0) failures.emplace_back(last, "nothing was checked");
        return failures;
    }

private:
    // What is wrong; an empty text when all is well.
    std::string RunLine(const std::wstring& line)
    try {
        std::wstring text = line.substr(std::min(line.find_first_not_of(L"?!<>& "), line.size()));
        if (const size_t user = text.find(L" <- "); user != std::wstring::npos) {
            actions_.push_back(Replaced(text.substr(user + 4)));
            text.resize(user);
        }
        if (line[0] == L'<') return actions_.push_back(Replaced(text)), "";
        if (const size_t colon = text.find(L": "); line[0] == L'&') {
            actions_.push_back(L'"' + text.substr(0, colon) + L"\" start " +
                               text.substr(colon + 2));
            return {};
        }
        if (line.starts_with(L"stage")) {
            std::wistringstream names(line.substr(5));
            for (std::wstring name; names >> name;)
                Stage::Record(name);
            return {};
        }
        std::optional<Robot> robot;
        if (!actions_.empty())
            robot.emplace([this, actions = std::exchange(actions_, {})](Desk& desk) {
                for (const std::wstring& action : actions)
                    desk.Act(action, [this](const std::wstring& more) { return RunLine(more); });
            });
        if (line.starts_with(L"??")) PumpUntil([&] { return Expect(text).empty(); }, kPatience);
        if (line[0] == L'?') return Expect(text);
        if (line[0] == L'!' || line[0] == L'>') {
            const size_t arrow = text.rfind(L" ->");
            if (arrow == std::wstring::npos) return "-> is missing";
            const std::wstring expected = Replaced(text.substr(std::min(arrow + 4, text.size())));
            if (line[0] == L'>') return ExpectCalls(text.substr(0, arrow), expected);
            std::string failures;
            for (const std::wstring& statement : PartsOf(text.substr(0, arrow), L" | "))
                failures += ExpectError(statement, expected);
            return failures;
        }
        return iswalpha(line[0]) ? Raised(engine_.Run(text).error) : "unknown mark";
    } catch (const std::exception& error) {
        return error.what();
    }

    // Both sides of And, and of an equation, are evaluated by themselves: the language's own
    // comparison passes over some characters, a NUL among them.
    std::string Expect(const std::wstring& expression)
    {
        if (PartsOf(expression, L" Or ").size() > 1) return ExpectEqual(expression, L"True");
        std::string failure;
        for (const std::wstring& part : PartsOf(expression, L" And ")) {
            const auto sides = PartsOf(part, L" = ");
            const bool equation = sides.size() == 2 && !part.starts_with(L"Not ");
            if (failure.empty())
                failure = ExpectEqual(equation ? sides[0] : part, equation ? sides[1] : L"True");
        }
        return failure;
    }
    std::string ExpectEqual(const std::wstring& left, const std::wstring& right)
    {
        Outcome actual = engine_.Evaluate(left);
        Outcome expected = engine_.Evaluate(right);
        const std::string raised = Raised(actual.error) + Raised(expected.error);
        if (!raised.empty()) return raised;
        const bool text = V_VT(&actual.value) == VT_BSTR;
        const bool same =
            text == (V_VT(&expected.value) == VT_BSTR) &&
            (text ? TextOf(actual.value) == TextOf(expected.value)
                  : VarCmp(&actual.value, &expected.value, LOCALE_INVARIANT, 0) == VARCMP_EQ);
        return same ? "" : Narrow(left + L" is " + TextOf(actual.value));
    }

    std::string ExpectError(const std::wstring& statement, const std::wstring& expected)
    {
        const ScriptError error = engine_.Run(statement).error;
        std::wostringstream number;
        number << std::uppercase << std::hex << error.number;
        if (expected == number.str()) return {};
        const std::wstring raised = number.str() + L' ' + error.description;
        const bool same = error.source == L"Quill." + name_ &&
                          (expected.ends_with(L"...")
                               ? raised.starts_with(expected.substr(0, expected.size() - 3))
                               : raised == expected);
        return same ? "" : error.number == 0 ? "raises nothing" : error.what();
    }

    std::string ExpectCalls(const std::wstring& statement, const std::wstring& expected)
    {
        Stage::Told();
        const std::string raised = Raised(engine_.Run(statement).error);
        std::wstring told; // some of it by other threads
        PumpUntil([&] {
            const std::wstring more = Stage::Told();
            told += (told.empty() || more.empty() ? L"" : L"; ") + more;
            return !expected.starts_with(told) || told == expected;
        });
        return told == expected ? raised : raised + "asks: " + Narrow(told);
    }

    // With {folder} and {crlf} replaced.
    std::wstring Replaced(std::wstring text) const
    {
        static const std::wregex lineBreak(LR"(\{crlf\})");
        static const std::wregex path(LR"(\{folder\})");
        text = std::regex_replace(text, lineBreak, L"\r\n");
        return std::regex_replace(text, path, host_->folder.Path(L""));
    }

    static std::string Raised(const ScriptError& error) { return error.number ? error.what() : ""; }

    const std::wstring name_;
    const Stage stage_;
    const ComPtr<Host> host_;
    Engine engine_;
    std::vector<std::wstring> actions_;
};

std::vector<Failure> RunTable(const std::string& name, std::istream& lines)
{
    return Table({name.begin(), name.end()}).Run(lines);
}

void RunFile(const std::string& name)
{
    const bool isMade = name == "Contract" || name == "Snippets"; // of the pages
    const std::string path = (isMade ? QUILL_PAGES : QUILL_TABLES) + ("/" + name) + ".txt";
    std::ifstream file(path);
    for (const auto& [line, failure] : RunTable(name, file))
        ADD_FAILURE_AT(path.c_str(), line) << failure;
}

std::vector<std::string> TableNames()
{
    std::vector<std::string> names{IsServerRun() ? "Snippets" : "Contract"};
    for (const auto& entry : std::filesystem::directory_iterator(QUILL_TABLES))
        if (const std::string name = entry.path().stem().string();
            IsServerRun() || (name != "Clients" && name != "Examples"))
            names.push_back(name);
    return names;
}

class TableTest : public testing::TestWithParam<std::string> {};

TEST_P(TableTest, Holds)
{
    RunFile(GetParam());
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
        {"? 1 + 1 = 3\n", "1:? 1 + 1 = 3\n  1 + 1 is 2;"},
        {"? \"a\" & nul = \"a\"\n", "1:"}, // texts are compared by their units
        {"? 1 = 1 And 1 = 2\n", "1:? 1 = 1 And 1 = 2\n  1 is 1;"},
        {"? Profile.Nothing\n", "1:? Profile.Nothing\n  error 0x800a01b6 from"},
        {"? 1 = 1\n\nx = (\n", "3:x = (\n  error 0x80"},
        {"? 1 = 1\n~ 1\n", "2:~ 1\n  unknown mark;"},
        {"! x = 1\n", "1:! x = 1\n  -> is missing;"},
        {"! x = 1 -> 800A000D\n", "1:! x = 1 -> 800A000D\n  raises nothing;"},
        {"! Profile.GetValue \"a\", \"b\" -> 80040340 No\n", "1:! Profile"},
        {"stage box\n> MessageBox.Show \"a\" -> box 1 : a\n", "2:> MessageBox.Show \"a\""},
        {"stage bix\n? 1 = 1\n", "1:stage bix\n  no seam bix;"},
        {"each 1 2\n? {it} = 1\nnext\n", "2:? 2 = 1\n  2 is 2;"},
        {"n = 1 => ? n = 1 => ? n = 2\n", "1:n = 1 => ? n = 1 => ? n = 2\n  n is 1;"},
        {"n = \" => ? 1 = 2\"\n", "2:nothing was checked;"},
        {"end\n? 1 = 1\n", "2:behind the end: ? 1 = 1;"},
    };
    const auto failuresOf = [](const std::string& lines) {
        std::istringstream input(lines);
        std::string failures;
        for (const auto& [line, failure] : RunTable("Profile", input))
            failures += std::to_string(line) + ':' + failure + ';';
        return failures;
    };
    for (const auto& [lines, expected] : cases) {
        const std::string failures = failuresOf(lines + std::string("end"));
        EXPECT_TRUE(failures.starts_with(expected)) << lines << "\ngives " << failures;
    }
    EXPECT_EQ(failuresOf("x = 1"), "1:the table ends early;1:nothing was checked;");
}

} // namespace
} // namespace quill::test
