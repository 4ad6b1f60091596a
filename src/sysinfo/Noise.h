// Quill.Noise: tones, message beeps and wave sounds.
#pragma once

#include "core/Automation.h"

#include <mmsystem.h>

#include <functional>
#include <string>

namespace quill {

// Keeps nothing and raises no errors. A call that lasts as long as its sound serves other calls
// meanwhile.
class Noise final : public Automation<_Noise> {
public:
    STDMETHODIMP Ring(LONG freq, LONG dura) noexcept override;
    STDMETHODIMP MsgBeep(LONG mtype) noexcept override;
    ACTION(Play, (BSTR sound, LONG hmod, LONG flags), sound, hmod, flags)
    ACTION(PlayFile, (BSTR sound, LONG flags), sound, flags)
    ACTION(PlayEvent, (BSTR sound, LONG flags), sound, flags)

private:
    void Play(const std::wstring& sound, LONG module, LONG flags);
    void PlayFile(const std::wstring& path, LONG flags)
    {
        Play(path, 0, flags | SND_FILENAME | SND_NODEFAULT);
    }
    void PlayEvent(const std::wstring& alias, LONG flags) { Play(alias, 0, flags | SND_ALIAS); }

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
