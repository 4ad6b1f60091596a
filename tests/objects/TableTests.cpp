// Runs the tables of tests/tables, each in an engine of its own. A line is
//
//     ? expression                    which must be True
//     ?? expression                   which must become True within some seconds
//     ! statement -> 8004033F text    which must raise this error of the table's class; ... at the
//                                     end stands for any, and without a text the number counts
//     < Class[:text] action           what the user does while the next line runs
//     ' comment                       or a blank line
//     end                             the last line
//
// and everything else that begins with a letter is a statement. A line that ends in " _" goes on.
// Classes are objects by their name (Make("Me") for those whose name the language has taken), and
// scripts know the members of Host. With QUILL_SERVER set, objects come from the registered server,
// and the examples are run too.
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "core/Catalogue.h"
#include "core/Text.h"
#include "services/Bytes.h"
#include "services/registryfn.h"
#include "support/CountedDispatch.h"
#include "support/Engine.h"
#include "support/EventListener.h"
#include "support/Reaction.h"
#include "support/Remote.h"
#include "support/Robot.h"
#include "support/TemporaryFolder.h"
#include "support/Values.h"

namespace quill::test {
namespace {

// Milliseconds.
constexpr DWORD kExampleDeadline = 45'000;
constexpr DWORD kPatience = 10'000;

bool IsServerRun()
{
    return _wgetenv(L"QUILL_SERVER") != nullptr;
}

ComPtr<IDispatch> MakeObject(const std::wstring& className)
{
    return (IsServerRun() ? Remote(className) : ScriptObject::Make(className)).Dispatch();
}

// One character a byte, both ways.
std::string Narrowed(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t unit : text)
        bytes += static_cast<char>(unit);
    return bytes;
}

std::wstring Widened(std::string_view bytes)
{
    std::wstring text;
    for (const char byte : bytes)
        text += static_cast<unsigned char>(byte);
    return text;
}

std::wstring TextOf(const VARIANT& value)
{
    Variant text;
    if (FAILED(VariantChangeType(&text, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR)))
        return L'<' + std::to_wstring(V_VT(&value)) + L'>';
    return {V_BSTR(&text) ? V_BSTR(&text) : L"", SysStringLen(V_BSTR(&text))};
}

// What tables know besides the classes.
class Host final : public CountedDispatch {
public:
    using Arguments = std::vector<Variant>; // behind all references

    explicit Host(const TemporaryFolder& folder) : folder_(folder) {}

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override
    {
        for (size_t index = 0; index < std::size(kMembers); ++index)
            if (_wcsicmp(names[0], kMembers[index].name) == 0) {
                ids[0] = static_cast<DISPID>(index + 1);
                return S_OK;
            }
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) noexcept override
    try {
        if (id < 1 || static_cast<size_t>(id) > std::size(kMembers)) return DISP_E_MEMBERNOTFOUND;
        Arguments arguments;
        for (UINT index = parameters->cArgs; index-- > 0;)
            arguments.push_back(Variant::Dereferenced(parameters->rgvarg[index]));
        if (arguments.size() != kMembers[id - 1].arguments) return DISP_E_BADPARAMCOUNT;
        Variant value = (this->*kMembers[id - 1].method)(arguments);
        if (result) *result = value.Detach();
        return S_OK;
    } catch (const AutomationError& error) {
        return error.number;
    } catch (...) {
        return E_FAIL;
    }

private:
    struct Member {
        const wchar_t* name;
        size_t arguments;
        Variant (Host::*method)(const Arguments&);
    };
    static const Member kMembers[21];

    Variant Folder(const Arguments&) { return Variant(folder_.Path(L"")); }
    Variant Nul(const Arguments&) { return Variant(std::wstring_view(L"\0", 1)); }
    Variant Make(const Arguments& given) { return Variant(MakeObject(TextOf(given[0])).Get()); }

    // A file's bytes as text of one character each. Writing makes its folder.
    Variant Write(const Arguments& given)
    {
        const std::filesystem::path path(folder_.Path(TextOf(given[0])));
        std::filesystem::create_directories(path.parent_path());
        folder_.Write(TextOf(given[0]), Narrowed(TextOf(given[1])));
        return {};
    }
    static std::wstring Contents(const std::wstring& path)
    {
        std::ifstream file(std::filesystem::path(path), std::ios::binary);
        if (!file) return L"<no file>";
        return Widened(std::string(std::istreambuf_iterator<char>(file), {}));
    }
    Variant Read(const Arguments& given) { return Variant(Contents(TextOf(given[0]))); }
    Variant Delete(const Arguments& given)
    {
        return Variant(DeleteFileW(TextOf(given[0]).c_str()) != FALSE);
    }
    Variant Environment(const Arguments& given)
    {
        wchar_t value[MAX_PATH]{};
        GetEnvironmentVariableW(TextOf(given[0]).c_str(), value, MAX_PATH);
        return Variant(std::wstring_view(value));
    }

    // Runs an example in the platform's script host, with the folder of the table as TEMP. Its last
    // lines, with bars between them.
    Variant RunExample(const Arguments& given)
    {
        auto script = std::filesystem::path(QUILL_EXAMPLES) / TextOf(given[0]);
        std::wstring commandLine = L"cscript.exe //nologo \"" + script.make_preferred().wstring() +
                                   L"\" " + TextOf(given[1]);
        const std::wstring printed = folder_.Write(L"printed", "");
        SetEnvironmentVariableW(L"TEMP", folder_.Path().c_str());
        DWORD exitCode = STILL_ACTIVE;
        {
            SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
            const FileHandle output(CreateFileW(printed.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                                &inheritable, OPEN_EXISTING, 0, nullptr));
            STARTUPINFOW startup{};
            startup.cb = sizeof startup;
            startup.dwFlags = STARTF_USESTDHANDLES;
            startup.hStdOutput = startup.hStdError = output.get();
            PROCESS_INFORMATION process{};
            if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                nullptr, &startup, &process))
                RaiseLastError();
            const Event thread(process.hThread);
            const Event owned(process.hProcess);
            if (WaitForSingleObject(process.hProcess, kExampleDeadline) == WAIT_OBJECT_0)
                GetExitCodeProcess(process.hProcess, &exitCode);
            else
                TerminateProcess(process.hProcess, 1);
        }
        if (exitCode != 0) return Variant(L"exit code " + std::to_wstring(exitCode));
        const std::vector<std::wstring> lines = SplitLines(Contents(printed));
        const size_t wanted =
            std::stoul(TextOf(given[2])) + 1; // the last line ends in a line break
        std::wstring last;
        for (size_t line = lines.size() - std::min(wanted, lines.size()); line + 1 < lines.size();
             ++line)
            last += (last.empty() ? L"" : L"|") + lines[line];
        return Variant(last);
    }

    // Hears the events of an object from now on; how many of a name came in, and the argument of
    // one.
    Variant Listen(const Arguments& given)
    {
        if (V_VT(&given[0]) != VT_DISPATCH) Check(E_INVALIDARG);
        listener_ = std::make_unique<EventListener>(V_DISPATCH(&given[0]));
        return {};
    }
    Variant Heard(const Arguments& given)
    {
        return Variant(static_cast<LONG>(listener_->Count(TextOf(given[0]))));
    }
    Variant Told(const Arguments& given)
    {
        const HeardEvent* event = listener_->Find(TextOf(given[0]), std::stoul(TextOf(given[1])));
        return event ? Variant::Dereferenced(event->arguments.at(0)) : Variant();
    }

    // Values that the language cannot make; the bytes of hexadecimal digits as text.
    Variant FromHex(const Arguments& given)
    {
        const std::wstring digits = TextOf(given[0]);
        std::wstring text;
        for (size_t index = 0; index < digits.size(); index += 2)
            text += static_cast<wchar_t>(std::stoi(digits.substr(index, 2), nullptr, 16));
        return Variant(text);
    }
    Variant Bytes(const Arguments& given) { return ByteArray(Narrowed(TextOf(given[0]))); }
    Variant Typed(const Arguments& given)
    {
        const auto type = static_cast<VARTYPE>(std::stoi(TextOf(given[0])));
        const std::wstring text = TextOf(given[1]);
        Variant value;
        if (type == VT_R8 || type == VT_DATE) { // also what is no number
            value = Variant(std::wcstod(text.c_str(), nullptr));
            V_VT(&value) = type;
        } else if (text.empty()) {
            value = OfType(type);
        } else {
            Check(VariantChangeType(&value, const_cast<Variant*>(&given[1]), 0, type));
        }
        return value;
    }
    Variant Lower(const Arguments& given)
    {
        return StartingAt(std::stoi(TextOf(given[1])), Variant::Dereferenced(given[0]));
    }
    Variant MakeSquare(const Arguments&) { return Square(); }

    // The elements of a list, each followed by a bar; before them what is not as usual.
    Variant Items(const Arguments& given)
    {
        const SAFEARRAY* array = ArrayOf(given[0]);
        if (!array) return Variant(L"no list: " + TextOf(given[0]));
        std::wstring text;
        if (const int type = V_VT(&given[0]) & VT_TYPEMASK; type != VT_VARIANT)
            text += std::to_wstring(type) + L':';
        if (array->rgsabound[0].lLbound != 0)
            text += L"from " + std::to_wstring(array->rgsabound[0].lLbound) + L':';
        for (const Variant& element : ElementsOf(*array, SIZE_MAX))
            text += TextOf(element) + L'|';
        return Variant(text);
    }
    Variant TypeOf(const Arguments& given) { return Variant(static_cast<LONG>(V_VT(&given[0]))); }

    // Texts are stored as they are, with or without a NUL; of other types, one byte a character.
    Variant RegMake(const Arguments& given)
    {
        HKEY key = nullptr;
        RegCreateKeyW(RootOf(given[0]), BelowRoot(given[0]).c_str(), &key);
        const RegistryKey owned(key);
        return {};
    }
    Variant RegSet(const Arguments& given)
    {
        const auto type = static_cast<DWORD>(std::stoi(TextOf(given[2])));
        const std::wstring text = TextOf(given[3]);
        const std::wstring wide = text + L'x'; // no NUL behind it, which the platform would store
        const std::string bytes = Narrowed(text);
        const bool isText = type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
        Check(HRESULT_FROM_WIN32(static_cast<DWORD>(
            RegSetKeyValueW(RootOf(given[0]), BelowRoot(given[0]).c_str(), TextOf(given[1]).c_str(),
                            type, isText ? static_cast<const void*>(wide.data()) : bytes.data(),
                            static_cast<DWORD>(isText ? 2 * text.size() : bytes.size())))));
        return {};
    }
    Variant RegDelete(const Arguments& given)
    {
        RegDeleteTreeW(RootOf(given[0]), BelowRoot(given[0]).c_str());
        return {};
    }
    static HKEY RootOf(const VARIANT& path)
    {
        const std::wstring text = TextOf(path);
        return RootKeyOf(text.substr(0, text.find(L'\\')));
    }
    static std::wstring BelowRoot(const VARIANT& path)
    {
        return TextOf(path).substr(TextOf(path).find(L'\\') + 1);
    }

    const TemporaryFolder& folder_;
    std::unique_ptr<EventListener> listener_;
};

const Host::Member Host::kMembers[21] = {
    {L"folder", 0, &Host::Folder},     {L"nul", 0, &Host::Nul},
    {L"Make", 1, &Host::Make},         {L"Write", 2, &Host::Write},
    {L"Read", 1, &Host::Read},         {L"Delete", 1, &Host::Delete},
    {L"Env", 1, &Host::Environment},   {L"Bytes", 1, &Host::Bytes},
    {L"Typed", 2, &Host::Typed},       {L"Lower", 2, &Host::Lower},
    {L"Square", 0, &Host::MakeSquare}, {L"Items", 1, &Host::Items},
    {L"TypeOf", 1, &Host::TypeOf},     {L"RegMake", 1, &Host::RegMake},
    {L"RegSet", 4, &Host::RegSet},     {L"RegDelete", 1, &Host::RegDelete},
    {L"X", 1, &Host::FromHex},         {L"Run", 3, &Host::RunExample},
    {L"Listen", 1, &Host::Listen},     {L"Heard", 1, &Host::Heard},
    {L"Told", 2, &Host::Told},
};

struct Failure {
    int line;
    std::string text;
};

class Table {
public:
    explicit Table(std::wstring name)
        : name_(std::move(name)), engine_([this](const std::wstring& item) {
              if (item == L"Host") return ComPtr<IDispatch>(new Host(folder_));
              return MakeObject(item);
          })
    {
        engine_.Add(L"Host", true);
        for (const CatalogueRow& row : kCatalogue)
            if (wcscmp(row.name, L"Me") != 0) engine_.Add(row.name);
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
            while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
                line.pop_back();
            if (line.empty() || line[0] == '\'') continue;
            if (ended) failures_.push_back({number, "behind the end: " + line});
            ended = line == "end";
            if (ended) continue;
            if (line[0] == '?' || line[0] == '!') ++checks;
            const std::string failure = RunLine(FromCodePage({line.begin(), line.end()}, CP_UTF8));
            if (!failure.empty()) failures_.push_back({begin, line + "\n  " + failure});
        }
        if (!ended) failures_.push_back({number, "the table ends early"});
        if (checks == 0) failures_.push_back({number, "nothing was checked"});
        return failures_;
    }

private:
    // What is wrong; an empty text when all is well.
    std::string RunLine(const std::wstring& line)
    {
        const std::wstring text =
            line.substr(std::min(line.find_first_not_of(L"?!< "), line.size()));
        if (line[0] == L'<') {
            actions_.push_back(Replaced(text));
            return {};
        }
        std::optional<Robot> robot;
        if (!actions_.empty())
            robot.emplace([actions = std::exchange(actions_, {})](Desk& desk) {
                for (const std::wstring& action : actions)
                    desk.Act(action);
            });
        if (line.starts_with(L"??")) PumpUntil([&] { return Expect(text).empty(); }, kPatience);
        if (line[0] == L'?') return Expect(text);
        if (line[0] == L'!') return ExpectError(text);
        if (!iswalpha(line[0])) return "unknown mark";
        return Raised(engine_.Run(text).error);
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

    // With {folder} and {crlf} replaced.
    std::wstring Replaced(std::wstring text) const
    {
        for (const auto& [name, value] :
             {std::pair<std::wstring, std::wstring>{L"{folder}", folder_.Path(L"")},
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
    const TemporaryFolder folder_;
    Engine engine_;
    std::vector<std::wstring> actions_;
    std::vector<Failure> failures_;
};

std::vector<std::string> TableNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(QUILL_TABLES))
        if (IsServerRun() || entry.path().stem() != "Examples")
            names.push_back(entry.path().stem().string());
    return names;
}

class TableTest : public testing::TestWithParam<std::string> {};

TEST_P(TableTest, Holds)
{
    const std::string path = QUILL_TABLES "/" + GetParam() + ".txt";
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
