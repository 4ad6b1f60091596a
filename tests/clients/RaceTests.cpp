// Clients that come, go and are killed while a server starts, runs and ends. QUILL_ROUNDS says how
// often.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <random>

#include "../bench/server.h"
#include "core/Catalogue.h"
#include "support/Remote.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

int Rounds(int otherwise)
{
    const wchar_t* const rounds = _wgetenv(L"QUILL_ROUNDS");
    return rounds ? _wtoi(rounds) : otherwise;
}

// A script with an object of each class.
std::wstring Script()
{
    std::wstring script;
    for (const CatalogueRow& row : kCatalogue)
        script += L"kind = TypeName(CreateObject(\"Quill." + std::wstring(row.name) + L"\")) : ";
    return script;
}

// Only by scripts/stress. One object of ours keeps the server, and its class objects: Wine's server
// can wait for itself when the last reference to an interface goes just after a call to it.
TEST(RunningServer, KeepsNothingOfClientsThatAreGone)
{
    const ComPtr<IDispatch> keeper = Remote(L"Profile");
    std::vector<ComPtr<IClassFactory>> held;
    for (const CatalogueRow& row : kCatalogue)
        held.push_back(bench::Hold(row.id));
    const bench::Server server(L"Quill.Profile");
    double memory = 0;
    long handles = 0;
    const int warm = 10; // all threads are there then
    for (int crowd = Rounds(50) + warm; crowd > 0; --crowd) {
        std::vector<Client> clients;
        for (int number = 0; number < 20; ++number)
            clients.emplace_back(Script());
        for (const Client& client : clients)
            EXPECT_EQ(client.Wait(60'000), 0u);
        Sleep(1'000); // the last release is on its way
        if (crowd <= Rounds(50)) continue;
        memory = server.PrivateMegabytes();
        handles = server.Handles();
    }
    EXPECT_LE(server.PrivateMegabytes(), 1.1 * memory + 1);
    EXPECT_LE(server.Handles(), handles + 16);
}

// The process that serves a client on a thread of its own. Wine names a server to clients up to the
// moment in which it closes its classes, and refuses with E_FAIL who comes to it just after;
// Windows turns them to a new server in the same step. So do we.
std::future<long> UseServer()
{
    return std::async(std::launch::async, [] {
        const ApartmentRecord record(COINIT_MULTITHREADED);
        for (;;) {
            try {
                const Variant id = Invoke(Remote(L"Me").Get(), L"ProcessID");
                return V_I4(&id);
            } catch (const ScriptError& error) {
                if (error.number != static_cast<unsigned>(E_FAIL)) throw;
            }
        }
    });
}

// The same server in another program, which lingers for 20 ms, so that each round meets its end; in
// some, a client is killed between the first step of its first creation and the end of its last
// release. Where the platform never tells of that, the server is ended as with the session.
TEST(QuickServer, ServesClientsThatMeetItsStartOrEnd)
{
    EXPECT_EQ(Program(L"client.exe", L"/regserver").Wait(30'000), 0u);
    std::mt19937 random{1};
    for (int round = Rounds(4); round > 0; --round) {
        const bool kills = round % 3 == 0;
        UseServer().get();
        const auto due = std::chrono::steady_clock::now() +
                         std::chrono::microseconds(random() % (kills ? 1'500'000 : 35'000));
        {
            std::optional<Client> killed;
            if (kills) killed.emplace(Script());
            while (std::chrono::steady_clock::now() < due)
                Sleep(0);
        }
        std::future<long> clients[4];
        for (auto& client : clients)
            client = UseServer();
        long server = 0;
        for (auto& client : clients)
            EXPECT_NO_THROW(server = client.get());
        if (round % 3 == 1) continue; // the next one may meet its end
        const Event process(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(server)));
        for (const HWND window : Listed(nullptr)) // also of one that the killed client keeps
            if (kills && Desk::ClassOf(window) == L"quill.Server")
                SendMessageW(window, WM_ENDSESSION, TRUE, 0);
        EXPECT_TRUE(!process || WaitForSingleObject(process.get(), 20'000) == WAIT_OBJECT_0)
            << "nobody needs it";
    }
    EXPECT_EQ(Program(L"client.exe", L"/unregserver").Wait(30'000), 0u);
}

} // namespace
} // namespace quill::test
