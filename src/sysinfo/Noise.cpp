#include "sysinfo/Noise.h"

#include <algorithm>
#include <memory>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/MessagePump.h"

namespace quill {

namespace {

constexpr size_t kLongestName = 260;
// How soon a sound is left alone whose client was killed.
constexpr DWORD kRoundMilliseconds = 250;

// True for null and for what is loaded: the platform would look for resources at any address.
bool IsModule(HMODULE module) noexcept
{
    HMODULE found = nullptr;
    return !module || (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                              GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                          reinterpret_cast<LPCWSTR>(module), &found) &&
                       found == module);
}

} // namespace

CREATABLE(Noise)

BOOL WINAPI PlaySystemSound(LPCWSTR sound, HMODULE module, DWORD flags) noexcept
{
    const auto play = FindSystemFunction<decltype(PlaySoundW)>(L"winmm.dll", "PlaySoundW");
    return play && play(sound, module, flags);
}

// The platform's calls for sounds return at the end without a look at messages, so they run on a
// thread of their own.
void Noise::UntilItEnds(std::function<void()> sound)
{
    using Sound = std::unique_ptr<std::function<void()>>;
    auto own = std::make_unique<std::function<void()>>(std::move(sound));
    const auto run = [](void* given) WINAPI -> DWORD {
        (*Sound(static_cast<Sound::pointer>(given)))();
        return 0;
    };
    const Owned<HANDLE, CloseHandle> thread(CreateThread(nullptr, 0, run, own.get(), 0, nullptr));
    if (!thread) return;
    static_cast<void>(own.release()); // the thread's from now on
    while (WaitForSingleObject(thread.get(), 0) == WAIT_TIMEOUT && !ClientsGone())
        if (!WaitForMessages(kRoundMilliseconds, thread.get())) break;
}

HRESULT Noise::Ring(LONG frequency, LONG milliseconds) noexcept
{
    return Run([&] {
        UntilItEnds([beep = Seam<SoundFunctions>().beep,
                     hertz = static_cast<DWORD>(std::clamp<LONG>(frequency, 37, 32'767)),
                     length = static_cast<DWORD>(std::clamp<LONG>(milliseconds, 10, 10'000))] {
            beep(hertz, length);
        });
    });
}

HRESULT Noise::MsgBeep(LONG type) noexcept
{
    return Run([&] {
        switch (type) {
        case -1:
        case MB_OK:
        case MB_ICONERROR:
        case MB_ICONQUESTION:
        case MB_ICONWARNING:
        case MB_ICONINFORMATION: break;
        default: type = MB_OK;
        }
        Seam<SoundFunctions>().messageBeep(static_cast<UINT>(type));
    });
}

void Noise::Play(const std::wstring& sound, LONG module, LONG flags)
{
    if (sound.size() > kLongestName) return;
    const auto handle = reinterpret_cast<HMODULE>(static_cast<LONG_PTR>(module));
    const bool fromResource = (flags & SND_RESOURCE) == SND_RESOURCE;
    // A script's string is no sound in memory: its own header would say where it ends.
    if (fromResource ? !IsModule(handle) : (flags & SND_MEMORY) && !sound.empty()) return;
    auto call = [play = Seam<SoundFunctions>().play, sound, handle, flags] {
        play(sound.empty() ? nullptr : sound.c_str(), handle, static_cast<DWORD>(flags));
    };
    if (flags & SND_ASYNC)
        call();
    else
        UntilItEnds(std::move(call));
}

} // namespace quill
