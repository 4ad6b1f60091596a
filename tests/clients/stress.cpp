// stress clients COUNT | objects | races ROUNDS | crowds ROUNDS | kills ROUNDS
//
// Puts load on a server and prints what becomes of it. `clients` and `objects` need a registered
// server, the others register their own, quick.exe beside this program, for a while.
//
//     clients   COUNT programs one after another, then 20 at once
//     objects   10,000 objects at once, several times
//     races     clients that come, one by one, while the server ends
//     crowds    the same, four at once
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
    explicit Registered(const wchar_t* program) : program_(program) { Run(L"/regserver"); }
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

// What a client got: a number from its server, or an error.
struct Got {
    long number = 0;
    std::string error;
};

// On a thread that is no apartment of the others.
std::future<Got> OnThread()
{
    return std::async(std::launch::async, [] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        Got got;
        try {
            got.number = UseQuill();
        } catch (const std::exception& error) {
            got.error = error.what();
        }
        CoUninitialize();
        return got;
    });
}

// The server lingers for 20 ms here: clients come around the end of that time, alone, or four in
// the same moment.
void Races(int rounds, int clientsAtOnce)
{
    const Registered server(L"quick.exe");
    std::mt19937 random(1);
    std::uniform_int_distribution<int> microseconds(0, 35'000);
    std::map<bool, int> served; // by another server than the last one
    const auto use = [](std::future<Got> client) {
        const Got got = client.get();
        if (!got.error.empty()) Fail(got.error);
        return got;
    };
    for (int round = 0; round < rounds; ++round) {
        const Got before = use(OnThread());
        const double due = Milliseconds() + microseconds(random) / 1e3;
        while (Milliseconds() < due)
            Sleep(0);
        std::vector<std::future<Got>> clients;
        for (int number = 0; number < clientsAtOnce; ++number)
            clients.push_back(OnThread());
        for (auto& client : clients)
            if (const Got got = use(std::move(client)); got.error.empty())
                ++served[got.number != before.number];
    }
    std::printf("  %d served by the ending server, %d by a new one; %d were turned to it here\n",
                served[false], served[true], turned.load());
}

// Clients are killed between the first step of their first creation and the end of their last
// release. Where the platform never tells of killed clients, their server is ended as at the end of
// the session.
void Kills(int rounds)
{
    const Registered registered(L"quick.exe");
    std::mt19937 random(1);
    const bench::Server server(L"Quill.Me");
    int ended = 0;
    int failures = 0;
    for (int round = 0; round < rounds; ++round) {
        const bool starting = round % 2 == 0;
        if (!starting) OnThread().get(); // it is about to end now
        {
            const Client client(L"once");
            Sleep(std::uniform_int_distribution<DWORD>(0, 1'500)(random));
            client.Kill();
        }
        if (const Got got = OnThread().get(); !got.error.empty()) {
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
        else if (mode == L"kills")
            Kills(rounds);
        else
            Fail("what is to be done?");
    } catch (const std::exception& error) {
        Fail(error.what());
    }
    return failed ? 1 : 0;
}
