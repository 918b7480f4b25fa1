#include "scan/read_feedback.h"

#include <algorithm>
#include <array>

#include "link/reading.h"
#include "platform/base.h"
#include "platform/sound.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"

namespace {

// By sound number, 1 to 9.
constexpr std::array<LPCWSTR, 9> SoundNames = {
    TEXT("Default"),  TEXT("Hwandsw"), TEXT("MenuPop"), TEXT("MsgBox"),  TEXT("Notify"),
    TEXT("VoicBeep"), TEXT("Alarm2"),  TEXT("Alarm3"),  TEXT("LowBatt"),
};

constexpr DWORD DurationStep = 500;  // ms
constexpr WORD LongestDuration = 30;

BOOL SwitchVibrator(DWORD on) {
    return KernelIoControl(IOCTL_VIBRATOR, &on, sizeof on, nullptr, 0, nullptr);
}

}  // namespace

BOOL PlayReadSound(int number) {
    const BOOL stopped = PlaySoundW(nullptr, nullptr, SND_NOWAIT);
    if (number < 1 || number > static_cast<int>(SoundNames.size())) {
        return stopped;
    }
    WCHAR path[MAX_PATH + 1];
    lstrcpyW(path, TEXT("\\Windows\\"));
    lstrcatW(path, SoundNames[static_cast<std::size_t>(number - 1)]);
    lstrcatW(path, TEXT(".wav"));
    return PlaySoundW(path, nullptr, SND_FILENAME | SND_NOWAIT | SND_ASYNC);
}

void Vibrate(DWORD on) {
    SwitchVibrator(on);
    const HANDLE thread = CreateThread(nullptr, 0, VibratorStopThread, nullptr, 0, nullptr);
    if (thread != nullptr) {
        CloseHandle(thread);
    }
}

void EndVibration() {
    if (HANDLE semaphore = ShellState.VibratorSemaphore.Exchange(nullptr)) {
        ReleaseSemaphore(semaphore, 1, nullptr);
        CloseHandle(semaphore);
    }
    SwitchVibrator(0);
}

DWORD WINAPI VibratorStopThread(LPVOID) {
    // The editor allows 1 to 30 steps, a settings file anything; the vibrator must come to rest all the same.
    const WORD steps = std::clamp<WORD>(Value(general::VibrateDuration), 1, LongestDuration);
    WaitForSingleObject(ShellState.VibratorSemaphore, steps * DurationStep);
    return static_cast<DWORD>(SwitchVibrator(0));
}

bool GiveReadFeedback() {
    const ReadingStep step;
    if (!step) {
        return false;
    }
    if (DigitOf(general::EnableVibrator) != 0) {
        Vibrate(1);
    }
    if (const WORD sound = DigitOf(general::GoodReadBeep); sound != 0) {
        PlayReadSound(sound);
    }
    return true;
}
