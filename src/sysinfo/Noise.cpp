#include "sysinfo/Noise.h"

#include <algorithm>
#include <utility>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "core/RunAside.h"

namespace quill {

namespace {

constexpr size_t kLongestName = 260;
constexpr DWORD kRoundMilliseconds = 250; // how often a waiting call looks for a killed client

// The limits of Beep.
constexpr LONG kLowestHertz = 37;
constexpr LONG kHighestHertz = 32'767;
constexpr LONG kShortestBeep = 10; // milliseconds
constexpr LONG kLongestBeep = 10'000;

DWORD Limited(LONG value, LONG lowest, LONG highest) noexcept
{
    return static_cast<DWORD>(std::clamp(value, lowest, highest));
}

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

// The platform's calls for sounds return at the end and dispatch no messages, so they run on a
// thread of their own.
void Noise::UntilItEnds(std::function<void()> sound)
{
    const Thread thread = RunAside(std::move(sound));
    while (thread && WaitForSingleObject(thread.get(), 0) == WAIT_TIMEOUT && !ClientsGone())
        if (!WaitForMessages(kRoundMilliseconds, thread.get())) break;
}

HRESULT Noise::Ring(LONG frequency, LONG milliseconds) noexcept
{
    return Run([&] {
        UntilItEnds(
            [beep = Seam<SoundFunctions>().beep,
             hertz = Limited(frequency, kLowestHertz, kHighestHertz),
             length = Limited(milliseconds, kShortestBeep, kLongestBeep)] { beep(hertz, length); });
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
    // A string is not a sound in memory: the platform would trust the size in its header.
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
