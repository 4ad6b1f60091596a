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

// PlaySound, whose library is loaded for the first sound; False where it is missing.
BOOL WINAPI PlaySystemSound(LPCWSTR sound, HMODULE module, DWORD flags) noexcept;

// A seam: the platform's sounds.
struct SoundFunctions {
    BOOL(WINAPI* beep)(DWORD frequency, DWORD milliseconds) = Beep;
    BOOL(WINAPI* messageBeep)(UINT type) = MessageBeep;
    BOOL(WINAPI* play)(LPCWSTR sound, HMODULE module, DWORD flags) = PlaySystemSound;
};

} // namespace quill
