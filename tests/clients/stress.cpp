// Clients that come, go and are killed while a server starts and ends. QUILL_ROUNDS says how often.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <random>

#include "../bench/server.h"
#include "core/Catalogue.h"
#include "support/Remote.h"

namespace quill::test {
namespace {

int Rounds(int otherwise)
{
    const wchar_t* const rounds = _wgetenv(L"QUILL_ROUNDS");
    return rounds ? _wtoi(rounds) : otherwise;
}

const std::wstring kOnce = WithEachClass(L"kind = TypeName(o)");

// The process that serves a client on a thread of its own. Wine names a server to clients up to the
// moment in which it closes its classes, and refuses with E_FAIL who comes to it just after;
// Windows turns them to a new server in the same step. So do we.
std::future<long> UseServer()
{
    return std::async(std::launch::async, [] {
        const ApartmentRecord record(COINIT_MULTITHREADED);
        for (;;) {
            try {
                return Remote(L"Me").Get(L"ProcessID").Number();
            } catch (const ScriptError& error) {
                if (error.number != static_cast<unsigned>(E_FAIL) || !OnWine()) throw;
            }
        }
    });
}

// quick.exe is registered in place of quill.exe: the same server, which lingers for 20 ms.
class QuickServer : public testing::Test {
protected:
    QuickServer() { EXPECT_EQ(Program(L"quick.exe", L"/regserver").Wait(30'000), 0u); }
    ~QuickServer() override { EXPECT_EQ(Program(L"quick.exe", L"/unregserver").Wait(30'000), 0u); }

    std::mt19937 random_{1};
};

TEST_F(QuickServer, ServesClientsThatMeetItsEnd)
{
    std::uniform_int_distribution<int> microseconds(0, 35'000);
    for (int round = Rounds(4); round > 0; --round) {
        UseServer().get();
        const auto due =
            std::chrono::steady_clock::now() + std::chrono::microseconds(microseconds(random_));
        while (std::chrono::steady_clock::now() < due)
            Sleep(0);
        std::future<long> clients[4];
        for (auto& client : clients)
            client = UseServer();
        long server = 0;
        for (auto& client : clients)
            EXPECT_NO_THROW(server = client.get());
        if (round % 2) continue; // the next one may meet its end
        const Event process(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(server)));
        EXPECT_TRUE(!process || WaitForSingleObject(process.get(), 20'000) == WAIT_OBJECT_0)
            << "nobody needs it";
    }
}

// Between the first step of their first creation and the end of their last release. Where the
// platform never tells of killed clients, their server is ended as at the end of the session.
TEST_F(QuickServer, ServesOthersWhenClientsAreKilledAtItsStartOrEnd)
{
    const bench::Server server(L"Quill.Me");
    for (int round = Rounds(8); round > 0; --round) {
        if (round % 2) UseServer().get(); // it is about to end now
        {
            const Client client(kOnce);
            Sleep(std::uniform_int_distribution<DWORD>(0, 1'500)(random_));
            client.Kill();
        }
        EXPECT_NO_THROW(UseServer().get());
        const bench::Handle process = server.Process();
        if (!process || WaitForSingleObject(process.get(), 2'000) == WAIT_OBJECT_0) continue;
        SendMessageW(FindWindowW(L"quill.Server", nullptr), WM_ENDSESSION, TRUE, 0);
        EXPECT_EQ(WaitForSingleObject(process.get(), 10'000), WAIT_OBJECT_0);
    }
}

// The registered server, with one object of ours that keeps it.
TEST(RunningServer, KeepsNothingOfClientsThatAreGone)
{
    const auto crowds = [](int count) {
        for (; count > 0; --count) {
            std::vector<Client> clients;
            for (int number = 0; number < 20; ++number)
                clients.emplace_back(kOnce);
            for (const Client& client : clients)
                EXPECT_EQ(client.Wait(60'000), 0u);
        }
        Sleep(2'000); // the last release is on its way
    };
    const ScriptObject keeper = Remote(L"Profile");
    // Wine's server can wait for itself when the last reference to an interface goes just after a
    // call to it.
    std::vector<ComPtr<IClassFactory>> held;
    for (const CatalogueRow& row : kCatalogue)
        held.push_back(bench::Hold(row.id));
    const bench::Server server(L"Quill.Profile");
    crowds(10); // all threads are there now
    const double memory = server.PrivateMegabytes();
    const long handles = server.Handles();
    const long windows = server.Windows();
    crowds(Rounds(50));
    EXPECT_LE(server.PrivateMegabytes(), 1.1 * memory + 1);
    EXPECT_LE(server.Handles(), handles + 16);
    EXPECT_LE(server.Windows(), windows);
}

} // namespace
} // namespace quill::test
