#include "core/Server.h"

#include <algorithm>
#include <deque>
#include <utility>

#include "core/ApartmentPool.h"
#include "core/AutomationError.h"
#include "core/MessagePump.h"
#include "core/ObjectLife.h"

namespace quill {

namespace {

// How long a client may take from finding a class object to asking it for an object.
constexpr UINT kLateMilliseconds = 500;

constexpr UINT kUnlocked = WM_APP; // the last lock is gone
constexpr UINT_PTR kTimer = 1;

// The class object of one catalogue row. Clients call it on any thread.
class ClassObject final : public IClassFactory, public IExternalConnection {
public:
    ClassObject(const CatalogueRow& row, ApartmentPool& pool) : row_(row), pool_(pool) {}

    void Register()
    {
        Check(CoRegisterClassObject(row_.id, static_cast<IClassFactory*>(this), CLSCTX_LOCAL_SERVER,
                                    REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED, &registration_));
        ofRegistration_ = references_.Count();
        // Clients that are already connecting when it is revoked still find it.
        CoLockObjectExternal(static_cast<IClassFactory*>(this), TRUE, TRUE);
        ofLock_ = references_.Count() - ofRegistration_;
    }
    void Revoke() noexcept
    {
        if (registration_ == 0) return;
        ofRegistration_ = 0;
        CoRevokeClassObject(std::exchange(registration_, 0));
    }
    // Calls of clients fail from now on.
    void Disconnect() noexcept
    {
        Revoke();
        CoLockObjectExternal(static_cast<IClassFactory*>(this), FALSE, TRUE);
        CoDisconnectObject(static_cast<IClassFactory*>(this), 0);
    }
    bool HasClients() const noexcept { return references_.Count() > ofRegistration_ + ofLock_; }

    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (id == IID_IUnknown || id == IID_IClassFactory)
            *object = static_cast<IClassFactory*>(this);
        else if (id == IID_IExternalConnection)
            *object = static_cast<IExternalConnection*>(this);
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; } // never freed
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        const ServerLock during;
        return pool_.Create(row_, id, object);
    }
    STDMETHODIMP LockServer(BOOL lock) noexcept override
    {
        if (lock) {
            ++clientLocks_;
            LockServerProcess();
            return S_OK;
        }
        // A surplus unlock would end the server under the objects of other clients.
        long held = clientLocks_;
        while (held > 0 && !clientLocks_.compare_exchange_weak(held, held - 1)) {
        }
        if (held > 0) UnlockServerProcess();
        return S_OK;
    }

    STDMETHODIMP_(DWORD) AddConnection(DWORD type, DWORD) noexcept override
    {
        return type & EXTCONN_STRONG ? references_.Add() : 0;
    }
    STDMETHODIMP_(DWORD) ReleaseConnection(DWORD type, DWORD, BOOL) noexcept override
    {
        const DWORD left = type & EXTCONN_STRONG ? references_.Remove() : references_.Count();
        // A killed client does not undo its locks.
        if (!HasClients())
            for (long held = clientLocks_.exchange(0); held > 0; --held)
                UnlockServerProcess();
        return left;
    }

private:
    const CatalogueRow& row_;
    ApartmentPool& pool_;
    ClientCount references_; // of clients, and those that the platform itself counts:
    DWORD ofRegistration_ = 0;
    DWORD ofLock_ = 0;
    std::atomic<long> clientLocks_{0};
    DWORD registration_ = 0;
};

// The life of a server. Never freed: a client's call may still be inside when it has ended.
class Server {
public:
    explicit Server(const Patience& patience) : patience_(patience) {}

    int Run()
    {
        window_ = CreateHiddenWindow(L"quill.Server", WindowProcedure, this, false);
        CoAddRefServerProcess(); // keeps the class objects open while the server lingers
        for (const CatalogueRow& row : kCatalogue)
            classes_.emplace_back(row, pool_).Register();
        Enter(Phase::Serving);
        NotifyUnlocked(window_, kUnlocked);
        Check(CoResumeClassObjects());
        const int exitCode = RunMessageLoop();
        NotifyUnlocked(nullptr, 0);
        Enter(Phase::Ended); // where something else has ended the loop
        for (ClassObject& object : classes_)
            object.Disconnect();
        DestroyWindow(window_);
        return exitCode;
    }

private:
    enum class Phase {
        Serving,
        Closed,   // new clients find another server; those that came in just before are served
        LastCall, // clients that hold class objects get time to use them
        Ended,
    };

    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) noexcept
    {
        if (message == WM_NCCREATE) {
            const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            SetWindowLongPtrW(window, GWLP_USERDATA,
                              reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
        }
        auto* self = reinterpret_cast<Server*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        switch (message) {
        case kUnlocked: self->OnUnlocked(); return 0;
        case WM_TIMER: self->OnTimer(); return 0;
        case WM_CLOSE: return 0; // sent to all windows, but meant for visible ones
        case WM_QUERYENDSESSION: return TRUE;
        case WM_ENDSESSION:
            // The system may end the process any time after this, so open dialogs end now. A script
            // gets the result of a user who cancelled.
            if (wParam) self->Enter(Phase::Ended);
            return 0;
        default: return DefWindowProcW(window, message, wParam, lParam);
        }
    }

    void Enter(Phase phase) noexcept
    {
        if (phase_ == Phase::Ended) return;
        phase_ = phase;
        switch (phase) {
        case Phase::Serving: Wait(patience_.firstClient); break;
        case Phase::Closed:
            TurnAwayNewClients();
            Wait(kLateMilliseconds);
            break;
        case Phase::LastCall: Wait(patience_.lastCall); break;
        case Phase::Ended:
            StartWatchdog();
            TurnAwayNewClients();
            pool_.Close();
            PostQuitMessage(0);
            break;
        }
    }

    void Wait(UINT milliseconds) noexcept { SetTimer(window_, kTimer, milliseconds, nullptr); }

    void OnUnlocked() noexcept
    {
        Wait(phase_ == Phase::Serving ? patience_.linger : kLateMilliseconds);
    }

    void OnTimer() noexcept
    {
        KillTimer(window_, kTimer);
        if (IsServerLocked()) return;
        switch (phase_) {
        case Phase::Serving:
            // At zero the platform directs new clients to a new server, in the same step.
            if (CoReleaseServerProcess() == 0)
                Enter(Phase::Closed);
            else
                CoAddRefServerProcess();
            break;
        case Phase::Closed: Enter(HasClients() ? Phase::LastCall : Phase::Ended); break;
        case Phase::LastCall: Enter(Phase::Ended); break;
        case Phase::Ended: break;
        }
    }

    void TurnAwayNewClients() noexcept
    {
        for (ClassObject& object : classes_)
            object.Revoke();
    }

    void StartWatchdog() const noexcept
    {
        HANDLE timer;
        if (patience_.end != 0)
            CreateTimerQueueTimer(&timer, nullptr, EndNow, nullptr, patience_.end, 0,
                                  WT_EXECUTEONLYONCE);
    }
    static void CALLBACK EndNow(void*, BOOLEAN) { TerminateProcess(GetCurrentProcess(), 1); }

    bool HasClients() const noexcept
    {
        return std::any_of(classes_.begin(), classes_.end(),
                           [](const ClassObject& object) { return object.HasClients(); });
    }

    const Patience patience_;
    HWND window_ = nullptr;
    ApartmentPool pool_;
    std::deque<ClassObject> classes_;
    Phase phase_ = Phase::Serving;
};

} // namespace

int RunServer(const Patience& patience)
{
    return (new Server(patience))->Run();
}

} // namespace quill
