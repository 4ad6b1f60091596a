// Runs the snippets that tests/pages.py has found against the registered server, each in an engine
// of its own, whose WScript object also connects events. Leading lines that begin with < say what
// the user does, as in tables.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/MessagePump.h"
#include "core/Text.h"
#include "services/Bytes.h"
#include "support/Engine.h"
#include "support/Listener.h"
#include "support/Members.h"
#include "support/Remote.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

constexpr DWORD kSleepDeadline = 60'000; // milliseconds in which a snippet may sleep

std::vector<std::string> Snippets()
{
    std::vector<std::string> names;
    if (_wgetenv(L"QUILL_SERVER"))
        for (const auto& entry : std::filesystem::directory_iterator(QUILL_PAGES "/snippets"))
            names.push_back(entry.path().filename().string());
    return names;
}

class SnippetTest : public testing::TestWithParam<std::string> {};

TEST_P(SnippetTest, ComesToItsEnd)
{
    std::ifstream file(QUILL_PAGES "/snippets/" + GetParam());
    std::vector<std::wstring> answers;
    std::wstring text;
    for (std::string each; std::getline(file, each);) {
        const std::wstring line = FromCodePage({each.begin(), each.end()}, CP_UTF8);
        if (text.empty() && line.starts_with(L"< "))
            answers.push_back(line.substr(2));
        else
            text += line + L"\r\n";
    }
    std::string printed;
    Robot robot([&](Desk& desk) {
        for (const std::wstring& answer : answers)
            desk.Act(answer);
    });
    const ComPtr<Members> host(new Members);
    Engine engine([&](const std::wstring&) { return ComPtr<IDispatch>(host.Get()); },
                  GetParam().ends_with(".js") ? L"JScript" : L"VBScript");
    engine.Add(L"WScript");
    host->Add(L"Echo", [&](std::vector<Variant> given) {
        for (const Variant& value : given)
            printed += Narrow(TextOf(value)) + ' ';
        printed += "| ";
    });
    host->Add(L"Sleep", [&, started = GetTickCount64()](DWORD milliseconds) {
        const ULONGLONG end = GetTickCount64() + milliseconds;
        if (end > started + kSleepDeadline) Check(E_ABORT); // a loop without an end
        for (ULONGLONG now; (now = GetTickCount64()) < end;)
            WaitForMessages(static_cast<DWORD>(end - now));
    });
    host->Add(L"CreateObject", [&](std::wstring progId, std::wstring prefix) {
        const ComPtr<IDispatch> object = ObjectOf(progId);
        Listener::Of(object.Get(), [&engine, prefix](const HeardEvent& event) {
            engine.Call(prefix + event.name, event.arguments);
        });
        return Variant(object.Get());
    });
    const ScriptError error = engine.Run(text).error;
    EXPECT_TRUE(robot.Finish() && error.number == 0) << error.what() << "\nprinted: " << printed;
}

// Without the registered server there are none.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SnippetTest);
INSTANTIATE_TEST_SUITE_P(Snippets, SnippetTest, testing::ValuesIn(Snippets()),
                         [](const auto& test) {
                             return test.param.substr(0, test.param.find('.'));
                         });

} // namespace
} // namespace quill::test
