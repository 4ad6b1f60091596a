// script_host SCRIPT [ARGUMENT…] [-- SCRIPT [ARGUMENT…]]…
//
// Runs scripts in the platform's script host, all at once, and offers each an object of its own:
//
//     Set host = CreateObject("QuillTest.Host")
//     host.Check condition, message
//     host.CheckEqual actual, expected, message
//     host.CheckError Err.Number, Err.Source, Err.Description, number, source, description
//     host.Folder                     a temporary folder, common to all scripts of the run
//     host.Answer caption, controlClass, text, action
//                                     has the robot wait for this control (an empty string stands
//                                     for any) and then act; answers are given one after the other.
//                                     Actions are those of Desk::Act
//     host.Answered                   waits for the robot; True when all went well
//     host.Listen object              hears the object's events from now on
//     host.Pump milliseconds          waits for the next event; False when none came
//     host.Heard(name)                how many events of this name there were
//     host.HeardArgument(name, occurrence, index)    both count from 0
//     host.Signal name                tells the other scripts
//     host.Await name, milliseconds   waits for another script's signal; False when none came
//     host.Done                       at the end: what ends without it has failed
//
// The platform's script host says nothing of a script's errors, so success is what is counted:
// each script must have checked something and have come to its end. The exit code is 0 then.
#include <atomic>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>

#include "support/CountedDispatch.h"
#include "support/EventListener.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

using namespace std::chrono_literals;
using Arguments = std::vector<Variant>;

constexpr wchar_t kProgId[] = L"QuillTest.Host";
constexpr wchar_t kClassText[] = L"{6D2C41C8-0E53-4B83-93B1-8B7A0A6C1C55}";
constexpr CLSID kClass{
    0x6D2C41C8, 0x0E53, 0x4B83, {0x93, 0xB1, 0x8B, 0x7A, 0x0A, 0x6C, 0x1C, 0x55}};
constexpr DWORD kDeadline = 60'000; // milliseconds, for all scripts of a run

// What the scripts of a run share.
struct Run {
    std::optional<TemporaryFolder> folder{std::in_place}; // until all scripts have ended
    std::atomic<int> checks{0};
    std::atomic<int> failures{0};
    std::atomic<int> done{0};
    std::mutex mutex;
    std::condition_variable changed;
    std::set<std::wstring> signals;

    void Fail(const std::string& message)
    {
        ++failures;
        std::printf("failed: %s\n", message.c_str());
        std::fflush(stdout);
    }
};

std::string Shown(const VARIANT& value)
{
    Variant text;
    std::string shown = "type " + std::to_string(V_VT(&value));
    if (SUCCEEDED(
            VariantChangeType(&text, const_cast<VARIANT*>(&value), VARIANT_ALPHABOOL, VT_BSTR)))
        shown += " \"" + Narrow({V_BSTR(&text), SysStringLen(V_BSTR(&text))}) + '"';
    return shown;
}

std::wstring TextOf(const VARIANT& value)
{
    Variant text;
    Check(VariantChangeType(&text, const_cast<VARIANT*>(&value), 0, VT_BSTR));
    return {V_BSTR(&text) ? V_BSTR(&text) : L"", SysStringLen(V_BSTR(&text))};
}

double NumberOf(const VARIANT& value)
{
    Variant number;
    Check(VariantChangeType(&number, const_cast<VARIANT*>(&value), 0, VT_R8));
    return V_R8(&number);
}

bool TruthOf(const VARIANT& value)
{
    Variant truth;
    Check(VariantChangeType(&truth, const_cast<VARIANT*>(&value), 0, VT_BOOL));
    return V_BOOL(&truth) != VARIANT_FALSE;
}

bool IsNumber(const VARIANT& value)
{
    const VARTYPE type = V_VT(&value);
    return type == VT_I2 || type == VT_I4 || type == VT_R4 || type == VT_R8 || type == VT_UI1 ||
           type == VT_CY;
}

// Numbers of all types compare by value: languages differ in what they make of a literal.
bool Same(const VARIANT& left, const VARIANT& right)
{
    if (IsNumber(left) && IsNumber(right)) return NumberOf(left) == NumberOf(right);
    if (V_VT(&left) != V_VT(&right)) return false;
    if (V_VT(&left) == VT_EMPTY || V_VT(&left) == VT_NULL) return true;
    return TextOf(left) == TextOf(right);
}

// Scripts write error numbers signed or unsigned.
unsigned ErrorNumberOf(const VARIANT& value)
{
    return static_cast<unsigned>(static_cast<long long>(NumberOf(value)));
}

// Starts the platform's script host for a script and its arguments.
Event StartScript(const std::vector<std::wstring>& words)
{
    std::wstring commandLine = L"cscript.exe //nologo";
    commandLine += L" \"" + std::filesystem::absolute(words[0]).wstring() + L'"';
    for (size_t index = 1; index < words.size(); ++index)
        commandLine += L" \"" + words[index] + L'"';
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process))
        RaiseLastError();
    CloseHandle(process.hThread);
    return Event(process.hProcess);
}

// Answers the dialogs of one script on a thread of its own.
class Answers {
public:
    explicit Answers(Run& run) : run_(run) {}
    ~Answers()
    {
        {
            const std::lock_guard guard(mutex_);
            ended_ = true;
        }
        changed_.notify_all();
        if (thread_.joinable()) thread_.join();
    }

    void Add(std::function<void(Desk&)> action)
    {
        const std::lock_guard guard(mutex_);
        actions_.push_back(std::move(action));
        if (!thread_.joinable()) thread_ = std::thread([this] { Work(); });
        changed_.notify_all();
    }

    bool Wait()
    {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [this] { return actions_.empty(); });
        return !failed_;
    }

private:
    void Work()
    {
        std::unique_lock guard(mutex_);
        for (;;) {
            changed_.wait(guard, [this] { return ended_ || !actions_.empty(); });
            if (actions_.empty()) return;
            const auto action = actions_.front();
            guard.unlock();
            std::string failure;
            try {
                action(desk_);
            } catch (const std::exception& error) {
                failure = error.what();
                desk_.CloseNewWindows(); // the script is inside the call that shows one
            }
            guard.lock();
            actions_.pop_front();
            if (!failure.empty()) {
                failed_ = true;
                run_.Fail("robot: " + failure);
            }
            changed_.notify_all();
        }
    }

    Run& run_;
    Desk desk_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void(Desk&)>> actions_; // the first one is being carried out
    bool failed_ = false;
    bool ended_ = false;
    std::thread thread_;
};

// The object that a script calls `host`. Calls come in on threads of the platform, so one that
// waits holds up no other script.
class Host final : public CountedDispatch {
public:
    explicit Host(Run& run) : run_(run), answers_(run) {}

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) noexcept override
    {
        for (size_t index = 0; index < std::size(kMembers); ++index)
            if (_wcsicmp(names[0], kMembers[index].name) == 0) {
                ids[0] = static_cast<DISPID>(index + 1);
                return S_OK;
            }
        run_.Fail("host has no member " + Narrow(names[0]));
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO*, UINT*) noexcept override
    try {
        if (id < 1 || static_cast<size_t>(id) > std::size(kMembers)) return DISP_E_MEMBERNOTFOUND;
        const Member& member = kMembers[id - 1];
        Arguments arguments;
        for (UINT index = parameters->cArgs; index-- > 0;)
            arguments.push_back(Variant::Dereferenced(parameters->rgvarg[index]));
        if (arguments.size() != member.arguments) {
            run_.Fail("wrong number of arguments for " + Narrow(member.name));
            return DISP_E_BADPARAMCOUNT;
        }
        Variant value = (this->*member.method)(arguments);
        if (result) *result = value.Detach();
        return S_OK;
    } catch (const AutomationError& error) {
        run_.Fail("host: " + Narrow(error.description));
        return error.number;
    } catch (const std::exception& error) {
        run_.Fail(std::string("host: ") + error.what());
        return E_FAIL;
    }

private:
    struct Member {
        const wchar_t* name;
        size_t arguments;
        Variant (Host::*method)(const Arguments&);
    };
    static const Member kMembers[13];

    Variant CheckTruth(const Arguments& given)
    {
        ++run_.checks;
        if (!TruthOf(given[0])) run_.Fail(Narrow(TextOf(given[1])));
        return {};
    }
    Variant CheckEqual(const Arguments& given)
    {
        ++run_.checks;
        if (!Same(given[0], given[1]))
            run_.Fail(Narrow(TextOf(given[2])) + ": is " + Shown(given[0]) + ", not " +
                      Shown(given[1]));
        return {};
    }
    Variant CheckError(const Arguments& given)
    {
        ++run_.checks;
        const ScriptError actual{ErrorNumberOf(given[0]), TextOf(given[1]), TextOf(given[2])};
        const ScriptError expected{ErrorNumberOf(given[3]), TextOf(given[4]), TextOf(given[5])};
        if (actual != expected) {
            std::ostringstream message;
            PrintTo(actual, &message);
            PrintTo(expected, &(message << ", not "));
            run_.Fail(message.str());
        }
        return {};
    }
    Variant Folder(const Arguments&) { return Variant(run_.folder->Path(L"")); }

    Variant Answer(const Arguments& given)
    {
        answers_.Add([caption = TextOf(given[0]), controlClass = TextOf(given[1]),
                      text = TextOf(given[2]), action = TextOf(given[3])](Desk& desk) {
            desk.Act(caption, controlClass, text, action);
        });
        return {};
    }
    Variant Answered(const Arguments&) { return Variant(answers_.Wait()); }

    Variant Listen(const Arguments& given)
    {
        if (V_VT(&given[0]) != VT_DISPATCH) throw std::runtime_error("Listen needs an object");
        listener_ = std::make_unique<EventListener>(V_DISPATCH(&given[0]));
        seen_ = 0;
        return {};
    }
    Variant Pump(const Arguments& given)
    {
        const bool came = Listener().WaitForMoreThan(seen_, Milliseconds(given[0]));
        if (came) ++seen_;
        return Variant(came);
    }
    Variant Heard(const Arguments& given)
    {
        return Variant(static_cast<LONG>(Listener().Count(TextOf(given[0]))));
    }
    Variant HeardArgument(const Arguments& given)
    {
        const HeardEvent* event =
            Listener().Find(TextOf(given[0]), static_cast<size_t>(NumberOf(given[1])));
        const auto index = static_cast<size_t>(NumberOf(given[2]));
        if (!event || index >= event->arguments.size())
            throw std::runtime_error("no such event argument");
        return Variant::Dereferenced(event->arguments[index]);
    }

    Variant Signal(const Arguments& given)
    {
        const std::lock_guard guard(run_.mutex);
        run_.signals.insert(TextOf(given[0]));
        run_.changed.notify_all();
        return {};
    }
    Variant Await(const Arguments& given)
    {
        const std::wstring name = TextOf(given[0]);
        std::unique_lock guard(run_.mutex);
        return Variant(run_.changed.wait_for(guard, Milliseconds(given[1]),
                                             [&] { return run_.signals.contains(name); }));
    }
    Variant Done(const Arguments&)
    {
        ++run_.done;
        return {};
    }

    static std::chrono::milliseconds Milliseconds(const VARIANT& value)
    {
        return std::chrono::milliseconds(static_cast<long long>(NumberOf(value)));
    }
    EventListener& Listener()
    {
        if (!listener_) throw std::runtime_error("Listen comes first");
        return *listener_;
    }

    Run& run_;
    Answers answers_;
    std::unique_ptr<EventListener> listener_;
    size_t seen_ = 0; // events that Pump has told of
};

const Host::Member Host::kMembers[13] = {
    {L"Check", 2, &Host::CheckTruth},
    {L"CheckEqual", 3, &Host::CheckEqual},
    {L"CheckError", 6, &Host::CheckError},
    {L"Folder", 0, &Host::Folder},
    {L"Answer", 4, &Host::Answer},
    {L"Answered", 0, &Host::Answered},
    {L"Listen", 1, &Host::Listen},
    {L"Pump", 1, &Host::Pump},
    {L"Heard", 1, &Host::Heard},
    {L"HeardArgument", 3, &Host::HeardArgument},
    {L"Signal", 1, &Host::Signal},
    {L"Await", 2, &Host::Await},
    {L"Done", 0, &Host::Done},
};

class HostFactory final : public IClassFactory {
public:
    explicit HostFactory(Run& run) : run_(run) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        *object = id == IID_IUnknown || id == IID_IClassFactory ? this : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID id, void** object) noexcept override
    {
        return ComPtr<IDispatch>(new Host(run_))->QueryInterface(id, object);
    }
    STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

private:
    Run& run_;
};

// The host's programmatic identifier is in the registry while the run lasts.
class HostRegistration {
public:
    HostRegistration()
    {
        const std::wstring key = Key(L"\\CLSID");
        CheckStatus(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, REG_SZ, kClassText,
                                    sizeof kClassText));
    }
    ~HostRegistration() { RegDeleteTreeW(HKEY_LOCAL_MACHINE, Key(L"").c_str()); }
    HostRegistration(const HostRegistration&) = delete;
    HostRegistration& operator=(const HostRegistration&) = delete;

private:
    static std::wstring Key(const wchar_t* below)
    {
        return std::wstring(L"Software\\Classes\\") + kProgId + below;
    }
    static void CheckStatus(LSTATUS status)
    {
        Check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
    }
};

bool RunScripts(const std::vector<std::vector<std::wstring>>& scripts)
{
    static Run run; // objects that a script did not release may outlive this call
    static HostFactory factory(run);
    const HostRegistration registration;
    DWORD cookie = 0;
    Check(
        CoRegisterClassObject(kClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie));
    std::vector<Event> processes;
    for (const auto& script : scripts)
        processes.push_back(StartScript(script));
    const ULONGLONG end = GetTickCount64() + kDeadline;
    for (const Event& process : processes) {
        const ULONGLONG now = GetTickCount64();
        if (WaitForSingleObject(process.get(), end > now ? static_cast<DWORD>(end - now) : 0) ==
            WAIT_OBJECT_0)
            continue;
        run.Fail("a script did not end");
        TerminateProcess(process.get(), 1);
    }
    CoRevokeClassObject(cookie);
    run.folder.reset();

    const int expected = static_cast<int>(scripts.size());
    if (run.done != expected)
        run.Fail(std::to_string(expected - run.done) + " of " + std::to_string(expected) +
                 " scripts did not come to their Done");
    if (run.checks == 0) run.Fail("nothing was checked");
    std::printf("%d checks, %d failures\n", run.checks.load(), run.failures.load());
    return run.failures == 0;
}

} // namespace
} // namespace quill::test

int wmain(int count, wchar_t** arguments)
{
    std::vector<std::vector<std::wstring>> scripts(1);
    for (int index = 1; index < count; ++index) {
        if (wcscmp(arguments[index], L"--") == 0)
            scripts.emplace_back();
        else
            scripts.back().emplace_back(arguments[index]);
    }
    for (const auto& script : scripts)
        if (script.empty()) {
            std::puts("script_host SCRIPT [ARGUMENT...] [-- SCRIPT [ARGUMENT...]]...");
            return 2;
        }
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    bool passed = false;
    try {
        passed = quill::test::RunScripts(scripts);
    } catch (const quill::AutomationError& error) {
        std::printf("failed: %s\n", quill::test::Narrow(error.description).c_str());
    } catch (const std::exception& error) {
        std::printf("failed: %s\n", error.what());
    }
    std::fflush(stdout);
    // Objects that a script did not release are still known to the platform.
    ExitProcess(passed ? 0 : 1);
}
