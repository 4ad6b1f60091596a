// What keeps the server running, with the calls of clients made on its own main thread.
#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "core/Apartment.h"
#include "core/Server.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

int Serve()
{
    return RunServer({.linger = 20, .firstClient = 30'000, .lastCall = 20, .end = 0});
}

ComPtr<IClassFactory> ClassOfProfile()
{
    ComPtr<IClassFactory> factory;
    EXPECT_HRESULT_SUCCEEDED(
        CoGetClassObject(CLSID_Profile, CLSCTX_LOCAL_SERVER, nullptr, IID_PPV_ARGS(&factory)));
    return factory;
}

ComPtr<IDispatch> object; // of a client that is there for a while
bool served = false;
bool hung = false;
const Event serving(CreateEventW(nullptr, TRUE, FALSE, nullptr));

TEST(Server, AnUnlockTooManyDoesNotEndItUnderTheObjectsOfOthers)
{
    const Robot client([](Desk& desk) {
        desk.Start([] {
            const ComPtr<IClassFactory> factory = ClassOfProfile();
            ASSERT_HRESULT_SUCCEEDED(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
            factory->LockServer(TRUE);
            for (int count = 0; count < 3; ++count)
                factory->LockServer(FALSE);
            SetTimer(nullptr, 0, 300, [](HWND, UINT, UINT_PTR timer, DWORD) WINAPI {
                KillTimer(nullptr, timer);
                served = true;
                object.Reset();
            });
        });
    });
    EXPECT_EQ(Serve(), 0);
    EXPECT_TRUE(served);
    object.Reset();
}

TEST(Server, TheLocksOfAKilledClientGoWithIt)
{
    const Robot client([](Desk& desk) {
        desk.Start([] {
            const ComPtr<IClassFactory> factory = ClassOfProfile();
            ComPtr<IExternalConnection> connection;
            ASSERT_HRESULT_SUCCEEDED(factory.As(&connection));
            connection->AddConnection(EXTCONN_STRONG, 0);
            factory->LockServer(TRUE);
            factory->LockServer(TRUE);
            connection->ReleaseConnection(EXTCONN_STRONG, 0, TRUE);
        });
    });
    const UINT_PTR timer = SetTimer(nullptr, 0, 5'000, [](HWND, UINT, UINT_PTR, DWORD) WINAPI {
        hung = true;
        PostQuitMessage(1);
    });
    EXPECT_EQ(Serve(), 0);
    EXPECT_FALSE(hung);
    KillTimer(nullptr, timer);
}

// The platform lets go of the class objects when their apartment ends, after the server.
TEST(Server, ClassObjectsThatAClientKeepsFailAfterItsEnd)
{
    std::thread server([] {
        const ApartmentRecord record(COINIT_MULTITHREADED);
        SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR timer, DWORD) WINAPI {
            KillTimer(nullptr, timer);
            SetEvent(serving.get());
        });
        EXPECT_EQ(Serve(), 0);
    });
    WaitForSingleObject(serving.get(), INFINITE);
    ComPtr<IDispatch> profile; // keeps the server until all have come
    EXPECT_HRESULT_SUCCEEDED(ClassOfProfile()->CreateInstance(nullptr, IID_PPV_ARGS(&profile)));
    std::array<ComPtr<IClassFactory>, 24> kept;
    for (ComPtr<IClassFactory>& factory : kept)
        factory = ClassOfProfile();
    profile.Reset();
    server.join();
    for (ComPtr<IClassFactory>& factory : kept)
        EXPECT_TRUE(factory && FAILED(factory->CreateInstance(nullptr, IID_PPV_ARGS(&profile))));
}

} // namespace
} // namespace quill::test
