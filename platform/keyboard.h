// Synthetic key events for the application in front. Any thread.
#pragma once

#include "platform/base.h"

#ifdef _WIN32

#include "platform/win32/wrapped.h"
#define keybd_event Terminal_keybd_event

#else

#define KEYEVENTF_KEYUP 0x0002

#define VK_TAB 0x09
#define VK_RETURN 0x0D
#define VK_SHIFT 0x10
#define VK_ESCAPE 0x1B
#define VK_SPACE 0x20
#define VK_MULTIPLY 0x6A
#define VK_ADD 0x6B
#define VK_F2 0x71
#define VK_F7 0x76
#define VK_OEM_1 0xBA
#define VK_OEM_PLUS 0xBB
#define VK_OEM_COMMA 0xBC
#define VK_OEM_MINUS 0xBD
#define VK_OEM_PERIOD 0xBE
#define VK_OEM_2 0xBF
#define VK_OEM_3 0xC0
#define VK_OEM_4 0xDB
#define VK_OEM_5 0xDC
#define VK_OEM_6 0xDD
#define VK_OEM_7 0xDE

void keybd_event(BYTE key, BYTE scanCode, DWORD flags, ULONG_PTR extraInfo);

#endif

// While one lives, the keys of its thread may wait, to go out together: they have gone when it goes.
class KeyBurst {
  public:
    KeyBurst();
    ~KeyBurst();
    KeyBurst(const KeyBurst&) = delete;
    KeyBurst& operator=(const KeyBurst&) = delete;
};

// Who takes the keys now. Any thread.
enum class KeysGoTo : DWORD { Unknown, Nowhere, Trace, Xtest, Wayland, Uinput, Windows, Count };
KeysGoTo WhoTakesKeys();
