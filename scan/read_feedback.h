// The user's confirmation of a good read: a sound and, if wanted, the vibrator.
#pragma once

#include "platform/kernel.h"

// The vibrator's kernel control code; its input is a DWORD, 1 for on and 0 for off.
inline constexpr DWORD IOCTL_VIBRATOR = 0x24321015;

// Stops the sound that plays, then starts sound 1 to 9 in the background; any other number plays nothing.
// Returns the platform's result of its last sound call. Any thread.
BOOL PlayReadSound(int number);

// Switches the vibrator on (`on` is 1) and starts the thread that switches it off after the vibrate duration,
// in steps of 500 ms: at least one, at most 30 whatever the settings file says. Any thread.
void Vibrate(DWORD on);

// Thread procedure: waits for the vibrate duration and switches the vibrator off. Returns the result of that.
DWORD WINAPI VibratorStopThread(LPVOID parameter);

// What a good read gives by the settings: the vibrator first, then the sound. False, and nothing is given,
// when the reader has been switched off meanwhile. Any thread.
[[nodiscard]] bool GiveReadFeedback();

// Switches the vibrator off, whatever it was to run for, and lets the threads that wait to do so end. Any
// thread.
void EndVibration();
