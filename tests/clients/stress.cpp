// stress clients COUNT | objects | races ROUNDS | crowds ROUNDS | control ROUNDS | kills ROUNDS
//
// Puts load on a server and prints what becomes of it. `clients` and `objects` need a registered
// server, the others register their own, quick.exe or bare.exe beside this program, for a while.
//
//     clients   COUNT programs one after another, then 20 at once
//     objects   10,000 objects at once, several times
//     races     clients that come, one by one, while the server ends
//     crowds    the same, four at once
//     control   as races, of the bare server; which arguments of calls to it stay
//     kills     clients that are killed while the server starts or ends
//
// The exit code is 1 when a client failed or something grew.
#include <cstdlib>
#include <future>
#include <map>
#include <optional>
#include <random>

#include "../bench/server.h"
#include "core/Catalogue.h"
#include "support/CountedDispatch.h"
#include "support/Remote.h"

namespace quill::test {
namespace {

using bench::Milliseconds;

// A client failed, or something has grown.
bool failed = false;

void Fail(const std::string& what)
{
    failed = true;
    std::printf("FAILED: %s\n", what.c_str());
    std::fflush(stdout);
}

// A server beside this program that is registered for a while.
class Registered {
public:
    Registered(const std::wstring& program, const std::wstring& arguments) : program_(program)
    {
        Run(L"/regserver" + arguments);
    }
    ~Registered() { Run(L"/unregserver"); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

private:
    void Run(const std::wstring& arguments) const
    {
        if (Program(program_, arguments).Wait(30'000) != 0)
            Fail(Narrow(program_) + " did not do " + Narrow(arguments));
    }

    std::wstring program_;
};

// Memory, handles and windows of the server with one object of ours.
class Watch {
public:
    // Holds all class objects: Wine's server can wait for itself for ever when the last reference
    // to an interface goes just after a call to it.
    Watch() : server_(L"Quill.Profile"), keeper_(Remote(L"Profile"))
    {
        for (const CatalogueRow& row : kCatalogue)
            held_.push_back(bench::Hold(row.id));
    }

    double Print(const char* when)
    {
        Settle();
        const double memory = server_.PrivateMegabytes();
        std::printf("  %-44s %8.1f MB %6ld handles %5ld windows\n", when, memory, server_.Handles(),
                    server_.Windows());
        std::fflush(stdout);
        return memory;
    }
    void Start(const char* when)
    {
        memory_ = Print(when);
        handles_ = server_.Handles();
        windows_ = server_.Windows();
    }
    // What is there now must be what was there at the start, within what the platform keeps.
    void Compare(const char* when)
    {
        const double memory = Print(when);
        if (memory > 1.1 * memory_ + 1) Fail("memory has grown");
        if (server_.Handles() > handles_ + 16) Fail("handles have been left open");
        if (server_.Windows() > windows_) Fail("windows have been left");
    }

private:
    // The last release of a client that ended is on its way.
    void Settle()
    {
        long before = -1;
        for (int round = 0; round < 40 && before != server_.Handles(); ++round) {
            before = server_.Handles();
            Sleep(250);
        }
    }

    bench::Server server_;
    ScriptObject keeper_;
    std::vector<ComPtr<IClassFactory>> held_;
    double memory_ = 0;
    long handles_ = 0;
    long windows_ = 0;
};

void Clients(int inTurn)
{
    constexpr int kWarm = 50;
    constexpr int kWarmWaves = 10;
    constexpr int kAtOnce = 20;
    constexpr int kWaves = 10;
    const auto once = [](const Client& client) {
        const DWORD code = client.Wait(60'000);
        if (code != 0) Fail("a client ended with " + std::to_string(code));
    };
    const auto together = [&](int waves) {
        for (int wave = 0; wave < waves; ++wave) {
            std::vector<Client> clients;
            for (int number = 0; number < kAtOnce; ++number)
                clients.emplace_back(L"once");
            for (const Client& client : clients)
                once(client);
        }
    };
    Watch watch;
    for (int number = 0; number < kWarm; ++number)
        once(Client(L"once"));
    together(kWarmWaves); // all threads are there now
    watch.Start("after 50 clients, and 10 times 20 at once");
    const double begin = Milliseconds();
    for (int number = 0; number < inTurn; ++number)
        once(Client(L"once"));
    std::printf("%d clients one after another: %.0f ms each\n", inTurn,
                (Milliseconds() - begin) / inTurn);
    watch.Compare("after them");
    const double second = Milliseconds();
    together(kWaves);
    std::printf("%d times %d clients at once: %.0f ms each time\n", kWaves, kAtOnce,
                (Milliseconds() - second) / kWaves);
    watch.Compare("after them");
}

void Objects()
{
    constexpr int kCount = 10'000;
    constexpr int kRounds = 2;
    for (const wchar_t* name : {L"DateTime", L"List"}) {
        Watch watch;
        std::optional<double> before;
        for (int round = 0; round < kRounds; ++round) {
            std::vector<ScriptObject> objects;
            const double empty = watch.Print("without objects");
            const double begin = Milliseconds();
            for (int number = 0; number < kCount; ++number)
                objects.push_back(Remote(name));
            const double made = Milliseconds();
            const double full = watch.Print("with 10,000 objects");
            const double release = Milliseconds();
            objects.clear();
            std::printf("%s: %.2f kB for an idle object, %.2f ms to make, %.2f ms to release\n",
                        Narrow(name).c_str(), (full - empty) * 1e3 / kCount,
                        (made - begin) / kCount, (Milliseconds() - release) / kCount);
            if (before)
                watch.Compare("after they are gone");
            else
                watch.Start("after they are gone"); // what the platform keeps, it keeps from now on
            before = empty;
        }
    }
}

// Wine names a server to clients up to the moment in which it closes its classes, and refuses with
// E_FAIL who comes to it just after; Windows turns them to a new server in the same step. So do we.
std::atomic<int> turned{0};

long UseQuill()
{
    for (;;) {
        try {
            return Remote(L"Me").Get(L"ProcessID").Number();
        } catch (const ScriptError& error) {
            if (error.number != static_cast<unsigned>(E_FAIL) || !OnWine()) throw;
            ++turned;
        }
    }
}

// The control: what becomes of clients of the least server that there can be. Which of its
// processes served is not told.
long UseBare()
{
    ObjectOf(L"QuillBench.Bare");
    return 0;
}

// What a client got: a number from its server, or an error.
struct Got {
    long number = 0;
    std::string error;
};

// On a thread that is no apartment of the others.
std::future<Got> OnThread(long (*use)())
{
    return std::async(std::launch::async, [use] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        Got got;
        try {
            got.number = use();
        } catch (const std::exception& error) {
            got.error = error.what();
        }
        CoUninitialize();
        return got;
    });
}

// The server lingers for 20 ms here: clients come around the end of that time, alone, or four in
// the same moment.
struct Raced {
    std::map<bool, int> served; // by another server than the last one
    std::map<std::string, int> errors;
};
Raced Race(int rounds, int clientsAtOnce, long (*use)())
{
    std::mt19937 random(1);
    std::uniform_int_distribution<int> microseconds(0, 35'000);
    Raced raced;
    double longest = 0;
    const double begin = Milliseconds();
    for (int round = 0; round < rounds; ++round) {
        const Got before = OnThread(use).get();
        if (!before.error.empty()) ++raced.errors[before.error];
        const double due = Milliseconds() + microseconds(random) / 1e3;
        while (Milliseconds() < due)
            Sleep(0);
        const double called = Milliseconds();
        std::vector<std::future<Got>> clients;
        for (int number = 0; number < clientsAtOnce; ++number)
            clients.push_back(OnThread(use));
        for (auto& client : clients) {
            const Got got = client.get();
            if (got.error.empty())
                ++raced.served[got.number != before.number];
            else
                ++raced.errors[got.error];
        }
        longest = std::max(longest, Milliseconds() - called);
    }
    std::printf("  %d rounds, %d clients each; the longest took %.0f ms, all %.0f s\n", rounds,
                clientsAtOnce, longest, (Milliseconds() - begin) / 1e3);
    for (const auto& [error, count] : raced.errors)
        std::printf("  %4d  %s\n", count, error.c_str());
    std::fflush(stdout);
    return raced;
}

void Races(int rounds, int clientsAtOnce)
{
    const Registered server(L"quick.exe", L"");
    Raced raced = Race(rounds, clientsAtOnce, UseQuill);
    std::printf("  %d served by the ending server, %d by a new one; %d were turned to it here\n",
                raced.served[false], raced.served[true], turned.load());
    if (!raced.errors.empty()) Fail("a client got no object");
}

class Passed final : public CountedDispatch {
public:
    static inline std::atomic<long> live{0};

    Passed() { ++live; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override
    {
        return DISP_E_MEMBERNOTFOUND;
    }

private:
    ~Passed() override { --live; }
};

Variant NewObject()
{
    return Variant(new Passed);
}

// Ten objects, in an array of objects or of Variants.
Variant TenObjects(VARTYPE type)
{
    Array array = MakeArray(type, 10);
    for (size_t index = 0; index < 10; ++index) {
        const VARIANT object = NewObject().Detach();
        if (type == VT_DISPATCH)
            DataOf<IDispatch*>(*array)[index] = V_DISPATCH(&object);
        else
            DataOf<VARIANT>(*array)[index] = object;
    }
    return Variant(std::move(array));
}

// Calls the bare server, which keeps nothing, and tells how many objects of the calls stay.
void PrintKept(const char* what, Variant (*bytes)(), Variant (*count)())
{
    constexpr int kCalls = 20;
    const ScriptObject keeper = ObjectOf(L"QuillBench.Bare"); // an ended server keeps nothing
    const long before = Passed::live;
    const char* outcome = "taken";
    {
        ScriptObject bare = ObjectOf(L"QuillBench.Bare");
        for (int call = 0; call < kCalls; ++call) {
            try {
                bare.Call(L"Take", bytes(), count());
            } catch (const ScriptError&) {
                outcome = "refused";
            }
        }
    }
    for (int round = 0; round < 40 && Passed::live != before; ++round)
        Sleep(25); // the last releases are on their way
    std::printf("  %d times %s, %s: %ld objects stay\n", kCalls, what, outcome,
                Passed::live - before);
}

// The same with the bare server, to see what the platform does to its clients, and what it keeps of
// arguments.
void Control(int rounds)
{
    {
        const Registered server(L"bare.exe", L" 20");
        Race(rounds, 1, UseBare);
    }
    const Registered server(L"bare.exe", L"");
    const auto one = [] { return Variant(LONG{1}); };
    PrintKept("an object", NewObject, one);
    PrintKept(
        "an array of ten Variants that are objects", [] { return TenObjects(VT_VARIANT); }, one);
    PrintKept(
        "an array of ten objects", [] { return TenObjects(VT_DISPATCH); }, one);
    PrintKept("an object, and another for a number", NewObject, NewObject);
}

// Clients are killed between the first step of their first creation and the end of their last
// release. Where the platform never tells of killed clients, their server is ended as at the end of
// the session.
void Kills(int rounds)
{
    const Registered registered(L"quick.exe", L"");
    std::mt19937 random(1);
    const bench::Server server(L"Quill.Me");
    int ended = 0;
    int failures = 0;
    for (int round = 0; round < rounds; ++round) {
        const bool starting = round % 2 == 0;
        if (!starting) OnThread(UseQuill).get(); // it is about to end now
        {
            const Client client(L"once");
            Sleep(std::uniform_int_distribution<DWORD>(0, 1'500)(random));
            client.Kill();
        }
        if (const Got got = OnThread(UseQuill).get(); !got.error.empty()) {
            Fail(got.error);
            ++failures;
            continue;
        }
        const bench::Handle process = server.Process();
        if (!process || WaitForSingleObject(process.get(), 2'000) == WAIT_OBJECT_0) {
            ++ended;
            continue;
        }
        SendMessageW(FindWindowW(L"quill.Server", nullptr), WM_ENDSESSION, TRUE, 0);
        if (WaitForSingleObject(process.get(), 10'000) != WAIT_OBJECT_0)
            Fail("a server did not end with the session");
    }
    std::printf(
        "%d clients killed while the server started or ended: %d failures; %d servers ended "
        "by themselves, %d kept what the killed ones held\n",
        rounds, failures, ended, rounds - ended - failures);
}

} // namespace
} // namespace quill::test

int wmain(int count, wchar_t** arguments)
{
    using namespace quill::test;
    const std::wstring mode = count > 1 ? arguments[1] : L"";
    const int rounds = count > 2 ? _wtoi(arguments[2]) : 10;
    EndHungServers();
    const quill::ApartmentRecord record(COINIT_MULTITHREADED);
    try {
        if (mode == L"clients")
            Clients(rounds);
        else if (mode == L"objects")
            Objects();
        else if (mode == L"races")
            Races(rounds, 1);
        else if (mode == L"crowds")
            Races(rounds, 4);
        else if (mode == L"control")
            Control(rounds);
        else if (mode == L"kills")
            Kills(rounds);
        else
            Fail("what is to be done?");
    } catch (const std::exception& error) {
        Fail(error.what());
    }
    return failed ? 1 : 0;
}
