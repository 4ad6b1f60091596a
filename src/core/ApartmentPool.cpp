#include "core/ApartmentPool.h"

#include <atomic>
#include <thread>
#include <utility>

#include "core/Apartment.h"
#include "core/AutomationError.h"
#include "core/MessagePump.h"

namespace quill {

namespace {

// Threads of the platform answer the calls that end together with their thread, and use what that
// thread releases: they get this much time.
constexpr DWORD kAnswerMilliseconds = 100;

constexpr UINT kCreateObject = WM_APP; // lParam: the Request

} // namespace

// A creation on its way to another apartment; lives on the stack of the thread that waits for it.
struct ApartmentPool::Request {
    const CatalogueRow& row;
    REFIID id;
    Event done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    HRESULT result = CO_E_SERVER_STOPPING; // until it is carried out
    IStream* marshalled = nullptr;

    void CarryOut() noexcept
    {
        ComPtr<IUnknown> object;
        result = CreateHere(row, IID_IUnknown, &object);
        if (SUCCEEDED(result))
            result = CoMarshalInterThreadInterfaceInStream(id, object.Get(), &marshalled);
        SetEvent(done.get());
    }

    // Serves incoming calls until the creation is done, or the apartment has ended without it.
    void Wait(HANDLE apartmentEnded) noexcept
    {
        const HANDLE events[]{done.get(), apartmentEnded};
        DWORD index;
        if (FAILED(CoWaitForMultipleHandles(0, INFINITE, 2, const_cast<HANDLE*>(events), &index)))
            WaitForMultipleObjects(2, events, FALSE, INFINITE);
    }
};

struct ApartmentPool::Apartment {
    std::atomic<int> load{0}; // objects that live here, or are about to
    HWND window = nullptr;    // null when the thread could not start
    Event ready{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    Event ended{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::thread thread;

    // Throws AutomationError if the platform refuses a window, an event or the thread.
    Apartment()
    {
        if (!ready || !ended) RaiseLastError();
        thread = std::thread([this] { Run(); });
        WaitForSingleObject(ready.get(), INFINITE);
        if (window) return;
        thread.join();
        Check(E_OUTOFMEMORY);
    }
    ~Apartment() { thread.join(); }

private:
    void Run() noexcept
    {
        try {
            ApartmentRecord record;
            record.load = &load;
            window = CreateHiddenWindow(L"quill.Apartment", WindowProcedure, nullptr, true);
            SetEvent(ready.get());
            RunMessageLoop();
            Sleep(kAnswerMilliseconds);
        } catch (...) {
            // Without a window there is no apartment; the creation that asked for it is refused.
        }
        SetEvent(ready.get());
        SetEvent(ended.get());
    }
};

LRESULT CALLBACK ApartmentPool::WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                                LPARAM lParam) noexcept
{
    switch (message) {
    case kCreateObject: reinterpret_cast<Request*>(lParam)->CarryOut(); return 0;
    case WM_CLOSE:
        EndMenu(); // the loop of a menu would use up the message that ends the thread
        DestroyWindow(window);
        PostQuitMessage(0);
        return 0;
    default: return DefWindowProcW(window, message, wParam, lParam);
    }
}

ApartmentPool::ApartmentPool() = default;

ApartmentPool::~ApartmentPool()
{
    Close();
}

void ApartmentPool::Close() noexcept
{
    {
        const std::lock_guard lock(mutex_);
        if (!std::exchange(closed_, true))
            for (const auto& apartment : apartments_)
                if (apartment) PostMessageW(apartment->window, WM_CLOSE, 0, 0);
    }
    // Their windows and ours send each other messages while they are destroyed.
    for (const auto& apartment : apartments_)
        if (apartment) WaitForEvent(apartment->ended.get());
}

std::unique_ptr<ApartmentPool::Apartment>& ApartmentPool::Choose(Placement placement)
{
    auto& shared = apartments_.front();
    if (placement == Placement::Shared) return shared;
    std::unique_ptr<Apartment>* least = nullptr;
    for (auto& apartment : apartments_) {
        if (&apartment == &shared) continue;
        if (!apartment || apartment->load == 0) return apartment; // all before it have objects
        if (!least || apartment->load < (*least)->load) least = &apartment;
    }
    return *least;
}

ApartmentPool::Apartment& ApartmentPool::Reserve(Placement placement)
{
    const std::lock_guard lock(mutex_);
    if (closed_) Check(CO_E_SERVER_STOPPING);
    std::unique_ptr<Apartment>& chosen = Choose(placement);
    if (!chosen) chosen = std::make_unique<Apartment>();
    ++chosen->load;
    return *chosen;
}

HRESULT ApartmentPool::Create(const CatalogueRow& row, REFIID id, void** object) noexcept
{
    try {
        Request request{row, id};
        if (!request.done) RaiseLastError();
        Apartment& apartment = Reserve(row.placement);
        if (PostMessageW(apartment.window, kCreateObject, 0, reinterpret_cast<LPARAM>(&request)))
            request.Wait(apartment.ended.get());
        --apartment.load; // the object counts itself
        if (FAILED(request.result)) return request.result;
        return CoGetInterfaceAndReleaseStream(request.marshalled, id, object);
    } catch (...) {
        return ReportException(IID_IClassFactory, std::wstring());
    }
}

} // namespace quill
