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
const Event serving(CreateEventW(nullptr, TRUE, FALSE, nullptr));

// An unlock too many does not end it under the objects of others; the locks of a killed client go
// with it.
TEST(Server, RunsAsLongAsItIsNeeded)
{
    static bool served = false;
    const Robot client([](Desk& desk) {
        desk.Start([] {
            const ComPtr<IClassFactory> factory = ClassOfProfile();
            ComPtr<IExternalConnection> connection;
            ASSERT_HRESULT_SUCCEEDED(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
            for (const BOOL lock : {TRUE, FALSE, FALSE, FALSE})
                factory->LockServer(lock);
            ASSERT_HRESULT_SUCCEEDED(factory.As(&connection));
            connection->AddConnection(EXTCONN_STRONG, 0);
            factory->LockServer(TRUE);
            factory->LockServer(TRUE);
            connection->ReleaseConnection(EXTCONN_STRONG, 0, TRUE);
            SetTimer(nullptr, 0, 300, [](HWND, UINT, UINT_PTR timer, DWORD) WINAPI {
                KillTimer(nullptr, timer);
                served = true;
                object.Reset();
            });
        });
    });
    const auto quit = [](HWND, UINT, UINT_PTR, DWORD) WINAPI { PostQuitMessage(1); };
    const UINT_PTR timer = SetTimer(nullptr, 0, 5'000, quit);
    EXPECT_EQ(Serve(), 0);
    EXPECT_TRUE(served);
    KillTimer(nullptr, timer);
    object.Reset();
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
    EXPECT_HRESULT_SUCCEEDED(ClassOfProfile()->CreateInstance(nullptr, IID_PPV_ARGS(&object)));
    std::array<ComPtr<IClassFactory>, 24> kept;
    for (ComPtr<IClassFactory>& factory : kept)
        factory = ClassOfProfile();
    object.Reset(); // has kept the server until all had come
    server.join();
    for (ComPtr<IClassFactory>& factory : kept)
        EXPECT_TRUE(factory && FAILED(factory->CreateInstance(nullptr, IID_PPV_ARGS(&object))));
}

} // namespace
} // namespace quill::test
