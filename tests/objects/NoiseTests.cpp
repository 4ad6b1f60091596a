#include "core/Apartment.h"
#include "sysinfo/Noise.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// What reaches the platform. Sounds play on threads of their own, and the call waits for their end.
std::string heard;
HWND window;                // of the thread that waits for a sound
DWORD_PTR served;           // its answer during the sound
LastClient* lastClient;     // is killed during the sound
std::atomic<bool> outlived; // the sound went on after the call had returned
const Event callReturned(CreateEventW(nullptr, TRUE, FALSE, nullptr));
const Event soundEnded(CreateEventW(nullptr, TRUE, FALSE, nullptr));

BOOL WINAPI Tone(DWORD frequency, DWORD milliseconds)
{
    heard += std::to_string(frequency) + " Hz, " + std::to_string(milliseconds) + " ms;";
    if (window)
        std::thread([] {
            SendMessageTimeoutW(window, WM_GETTEXTLENGTH, 0, 0, SMTO_NORMAL, 5'000, &served);
        }).join();
    return TRUE;
}

BOOL WINAPI MessageSound(UINT type)
{
    heard += "beep " + std::to_string(static_cast<int>(type)) + ';';
    return TRUE;
}

BOOL WINAPI Wave(LPCWSTR sound, HMODULE module, DWORD flags)
{
    std::ostringstream text;
    text << (sound ? Narrow(sound) : "(null)") << std::hex << ' '
         << reinterpret_cast<UINT_PTR>(module) << ' ' << flags << ';';
    heard += text.str();
    if (lastClient) {
        lastClient->Die();
        outlived = WaitForSingleObject(callReturned.get(), 5'000) == WAIT_OBJECT_0;
        SetEvent(soundEnded.get());
    }
    return TRUE;
}

class NoiseTest : public testing::Test {
protected:
    NoiseTest() { Seam<SoundFunctions>() = {Tone, MessageSound, Wave}; }
    ~NoiseTest() override
    {
        Seam<SoundFunctions>() = before_;
        window = nullptr;
        lastClient = nullptr;
    }

    template <class... Arguments>
    std::string Heard(const wchar_t* method, Arguments&&... arguments)
    {
        heard.clear();
        noise_.Call(method, std::forward<Arguments>(arguments)...);
        return heard;
    }

    const SoundFunctions before_ = Seam<SoundFunctions>();
    ScriptObject noise_ = ScriptObject::Make(L"Noise");
};

TEST_F(NoiseTest, TonesAndBeepsKeepToTheirLimits)
{
    EXPECT_EQ(Heard(L"Ring"), "1024 Hz, 500 ms;");
    EXPECT_EQ(Heard(L"Ring", 20, 5), "37 Hz, 10 ms;");
    EXPECT_EQ(Heard(L"Ring", 40'000, 20'000), "32767 Hz, 10000 ms;");
    EXPECT_EQ(Heard(L"Ring", Missing{}, -2'147'483'647), "1024 Hz, 10 ms;");
    for (int type : {-1, 0, 16, 32, 48, 64})
        EXPECT_EQ(Heard(L"MsgBeep", type), "beep " + std::to_string(type) + ';');
    for (int type : {17, -2, 65536 + 16})
        EXPECT_EQ(Heard(L"MsgBeep", type), "beep 0;");
}

TEST_F(NoiseTest, SoundsArriveAsTheFlagsSay)
{
    const long self = static_cast<long>(reinterpret_cast<LONG_PTR>(GetModuleHandleW(nullptr)));
    std::ostringstream resource;
    resource << "r " << std::hex << self << " 40005;";
    EXPECT_EQ(Heard(L"Play", L"r", self, SND_RESOURCE | SND_ASYNC), resource.str());
    EXPECT_EQ(Heard(L"Play", L"", 0, 0x40), "(null) 0 40;");
    EXPECT_EQ(Heard(L"PlayFile", L"a.wav", 1), "a.wav 0 20003;");
    EXPECT_EQ(Heard(L"PlayEvent", L""), "(null) 0 10000;");
    EXPECT_EQ(Heard(L"PlayEvent", std::wstring(260, L'x')), std::string(260, 'x') + " 0 10000;");
    EXPECT_EQ(Heard(L"PlayEvent", std::wstring(261, L'x')), "");
    // What would have the platform read memory that is no sound.
    EXPECT_EQ(Heard(L"Play", L"RIFF", 0, SND_MEMORY), "");
    EXPECT_EQ(Heard(L"PlayFile", L"RIFF", SND_MEMORY | SND_ASYNC), "");
    for (long module : {12'345L, -2L, self + 2})
        EXPECT_EQ(Heard(L"Play", L"r", module, SND_RESOURCE), "");
}

TEST_F(NoiseTest, OthersAreServedWhileItSounds)
{
    const Owned<HWND, DestroyWindow> own(CreateWindowW(L"STATIC", L"seven..", WS_POPUP, 0, 0, 0, 0,
                                                       nullptr, nullptr, nullptr, nullptr));
    window = own.get();
    served = 0;
    noise_.Call(L"Ring");
    EXPECT_EQ(served, 7u);
}

TEST_F(NoiseTest, ASoundWithoutItsClientIsNotWaitedFor)
{
    LastClient client(noise_.Dispatch());
    lastClient = &client;
    noise_.Call(L"PlayFile", L"long.wav");
    SetEvent(callReturned.get());
    ASSERT_EQ(WaitForSingleObject(soundEnded.get(), 10'000), WAIT_OBJECT_0);
    EXPECT_TRUE(outlived);
}

} // namespace
} // namespace quill::test
