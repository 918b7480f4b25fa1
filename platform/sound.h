// Sound files. Any thread.
#pragma once

#include "platform/base.h"

#ifdef _WIN32
#include "platform/win32/wrapped.h"
#define PlaySoundW TerminalPlaySoundW
#else

#define SND_ASYNC 0x00000001u
#define SND_NOWAIT 0x00002000u
#define SND_FILENAME 0x00020000u

// Plays a file in the background (SND_FILENAME | SND_ASYNC), cancelling the sound that plays; a null name
// only cancels. A terminal without a sound device stays silent and this returns TRUE.
BOOL PlaySoundW(LPCWSTR name, HMODULE module, DWORD flags);

#endif
