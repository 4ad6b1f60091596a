#include "core/Module.h"

#include <deque>
#include <utility>

#include "core/Apartments.h"
#include "core/AutomationError.h"
#include "core/Catalogue.h"
#include "core/MessagePump.h"

namespace quill {

namespace {

// How long a client may take from finding a class object to asking it for an object.
constexpr UINT kLateMilliseconds = 500;

constexpr UINT kUnlocked = WM_APP; // the last lock is gone
constexpr UINT_PTR kTimer = 1;

std::atomic<long> locks{0};
std::atomic<HWND> mainWindow{nullptr}; // hears of the last unlock; null while there is no server

void Lock() noexcept
{
    ++locks;
    CoAddRefServerProcess();
}

void Unlock() noexcept
{
    CoReleaseServerProcess();
    if (--locks == 0 && mainWindow) PostMessageW(mainWindow, kUnlocked, 0, 0);
}

// The class object of one catalogue row. Lives as long as the server.
class ClassObject final : public IClassFactory, public IExternalConnection {
public:
    ClassObject(const CatalogueRow& row, ApartmentPool& pool) : row_(row), pool_(pool) {}

    HRESULT Register() noexcept
    {
        const HRESULT registered =
            CoRegisterClassObject(row_.id, static_cast<IClassFactory*>(this), CLSCTX_LOCAL_SERVER,
                                  REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED, &registration_);
        if (FAILED(registered)) return registered;
        // Clients that are on their way when it is revoked still find it. What the platform counts
        // for that is no client.
        const DWORD before = clients_.Count();
        CoLockObjectExternal(static_cast<IClassFactory*>(this), TRUE, TRUE);
        own_ = clients_.Count();
        ownRevoked_ = own_ - before;
        return S_OK;
    }
    void Revoke() noexcept
    {
        if (registration_ == 0) return;
        own_ = ownRevoked_;
        CoRevokeClassObject(std::exchange(registration_, 0));
    }
    void Disconnect() noexcept
    {
        Revoke();
        CoLockObjectExternal(static_cast<IClassFactory*>(this), FALSE, TRUE);
    }
    bool HasClients() const noexcept { return clients_.Count() > own_; }

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
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        const ServerLock during;
        return row_.home == Home::Main ? CreateHere(row_, id, object)
                                       : pool_.Create(row_, id, object);
    }
    STDMETHODIMP LockServer(BOOL lock) noexcept override
    {
        if (lock) {
            Lock();
            ++clientLocks_;
            return S_OK;
        }
        // One more unlock than locks would let the server end under the objects of others.
        long held = clientLocks_;
        while (held > 0 && !clientLocks_.compare_exchange_weak(held, held - 1)) {
        }
        if (held > 0) Unlock();
        return S_OK;
    }

    STDMETHODIMP_(DWORD) AddConnection(DWORD type, DWORD) noexcept override
    {
        return type & EXTCONN_STRONG ? clients_.Add() : 0;
    }
    STDMETHODIMP_(DWORD) ReleaseConnection(DWORD type, DWORD, BOOL) noexcept override
    {
        const DWORD left = type & EXTCONN_STRONG ? clients_.Remove() : clients_.Count();
        // A client that was killed takes none of its locks back.
        if (left <= own_)
            for (long held = clientLocks_.exchange(0); held > 0; --held)
                Unlock();
        return left;
    }

private:
    const CatalogueRow& row_;
    ApartmentPool& pool_;
    ClientCount clients_;
    std::atomic<DWORD> own_{0}; // of these, those that the server has itself
    DWORD ownRevoked_ = 0;
    std::atomic<long> clientLocks_{0};
    DWORD registration_ = 0;
};

class Server {
public:
    explicit Server(const Patience& patience) : patience_(patience) {}

    int Run()
    {
        window_ = CreateHiddenWindow(L"quill.Server", WindowProcedure, this, false);
        CoAddRefServerProcess(); // keeps the class objects open while the server lingers
        for (const CatalogueRow& row : kCatalogue)
            Check(classes_.emplace_back(row, pool_).Register());
        SetTimer(window_, kTimer, patience_.firstClient, nullptr);
        mainWindow = window_;
        Check(CoResumeClassObjects());
        const int exitCode = RunMessageLoop();
        EndSoon();
        mainWindow = nullptr;
        for (ClassObject& object : classes_)
            object.Disconnect();
        DestroyWindow(window_);
        return exitCode;
    }

private:
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
        case kUnlocked:
            SetTimer(window, kTimer, self->closed_ ? kLateMilliseconds : self->patience_.linger,
                     nullptr);
            return 0;
        case WM_TIMER: self->EndIfIdle(); return 0;
        case WM_CLOSE: return 0; // asked of all windows; means those that the user sees
        case WM_QUERYENDSESSION: return TRUE;
        case WM_ENDSESSION:
            if (wParam) self->EndWithSession();
            return 0;
        default: return DefWindowProcW(window, message, wParam, lParam);
        }
    }

    void EndIfIdle() noexcept
    {
        KillTimer(window_, kTimer);
        if (locks != 0) return;
        if (!closed_) {
            // At zero the platform turns new clients to a new server, in the same step.
            if (CoReleaseServerProcess() != 0) {
                CoAddRefServerProcess();
                return;
            }
            TurnAwayNewClients();
            // A client that came in just before still gets its object; the server ends after it.
            SetTimer(window_, kTimer, kLateMilliseconds, nullptr);
            return;
        }
        if (HasClients() && !std::exchange(lastCall_, true)) {
            SetTimer(window_, kTimer, patience_.lastCall, nullptr);
            return;
        }
        PostQuitMessage(0);
    }

    void TurnAwayNewClients() noexcept
    {
        closed_ = true;
        for (ClassObject& object : classes_)
            object.Revoke();
    }

    // The system ends the process any time after this: what is open ends before. A script gets
    // the answer of a user who cancelled.
    void EndWithSession() noexcept
    {
        EndSoon();
        TurnAwayNewClients();
        pool_.Close();
        PostQuitMessage(0);
    }

    void EndSoon() const noexcept
    {
        HANDLE timer;
        if (patience_.end != 0)
            CreateTimerQueueTimer(&timer, nullptr, EndNow, nullptr, patience_.end, 0,
                                  WT_EXECUTEONLYONCE);
    }
    static void CALLBACK EndNow(void*, BOOLEAN) { TerminateProcess(GetCurrentProcess(), 1); }

    bool HasClients() const noexcept
    {
        for (const ClassObject& object : classes_)
            if (object.HasClients()) return true;
        return false;
    }

    const Patience patience_;
    HWND window_ = nullptr;
    ApartmentPool pool_;
    std::deque<ClassObject> classes_;
    bool closed_ = false;   // no new clients come in any more
    bool lastCall_ = false; // those that hold class objects have been given time
};

} // namespace

ServerLock::ServerLock() noexcept
{
    Lock();
}

ServerLock::~ServerLock()
{
    Unlock();
}

int RunServer(const Patience& patience)
{
    return Server(patience).Run();
}

} // namespace quill
