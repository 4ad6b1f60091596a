// Quill.Noise: tones, message beeps and wave sounds.
#pragma once

#include "core/Automation.h"

#include <mmsystem.h>

namespace quill {

// Keeps nothing and raises no errors. A call that lasts as long as its sound serves other calls
// meanwhile.
class Noise final : public Automation<_Noise> {
public:
    STDMETHODIMP Ring(LONG freq, LONG dura) noexcept override
    {
        return Call(&Noise::PlayTone, freq, dura);
    }
    STDMETHODIMP MsgBeep(LONG mtype) noexcept override { return Call(&Noise::PlayBeep, mtype); }
    STDMETHODIMP Play(BSTR sound, LONG hmod, LONG flags) noexcept override
    {
        return Call(&Noise::PlaySoundOf, sound, hmod, flags);
    }
    STDMETHODIMP PlayFile(BSTR sound, LONG flags) noexcept override
    {
        return Call(&Noise::PlaySoundOf, sound, LONG{0}, flags | SND_FILENAME | SND_NODEFAULT);
    }
    STDMETHODIMP PlayEvent(BSTR sound, LONG flags) noexcept override
    {
        return Call(&Noise::PlaySoundOf, sound, LONG{0}, flags | SND_ALIAS);
    }

private:
    void PlayTone(LONG frequency, LONG milliseconds);
    void PlayBeep(LONG type);
    void PlaySoundOf(const std::wstring& sound, LONG module, LONG flags);

    void UntilItEnds(std::function<void()> sound);
};

// The platform's sounds; tests put their own in their place.
struct SoundFunctions {
    BOOL(WINAPI* beep)(DWORD frequency, DWORD milliseconds);
    BOOL(WINAPI* messageBeep)(UINT type);
    BOOL(WINAPI* play)(LPCWSTR sound, HMODULE module, DWORD flags);
};
SoundFunctions& SoundsOfThread() noexcept;

} // namespace quill
