// Typed keys: the application in front gets the character that a US keyboard would give, whatever its layout.
#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

#include "platform/log.h"
#include "platform/us_keyboard.h"

namespace {

// A stroke goes out as one, from its first key down to its last key up: no program that is paused or killed
// leaves a key down. Only Tab is held.
struct Stroke {
    std::array<INPUT, 8> Events{};
    UINT Count = 0;
    int Held = 0;  // keys
    bool Shift = false;
};
thread_local Stroke Current;

// The screen may be locked, or belong to the system's own questions: then nobody gets keys.
void Send() {
    static std::atomic<bool> refused = false;
    const UINT count = std::exchange(Current.Count, 0);
    const bool taken = SendInput(count, Current.Events.data(), sizeof(INPUT)) == count;
    if (!taken && !refused) {
        WriteLogLine(LogPriority::Error, L"keys are refused: nothing is typed");
    }
    refused = !taken;
}

// Whether the key gives that character in the window in front.
bool GivesCharacter(BYTE key, bool shift, char character) {
    const DWORD thread = GetWindowThreadProcessId(GetForegroundWindow(), nullptr);
    const SHORT there = VkKeyScanExW(static_cast<WCHAR>(character), GetKeyboardLayout(thread));
    const bool locked = (GetKeyState(VK_CAPITAL) & 1) != 0 && key >= 'A' && key <= 'Z';
    return !locked && there == (key | (shift ? 0x100 : 0));
}

}  // namespace

void WINAPI Terminal_keybd_event(BYTE key, BYTE scanCode, DWORD flags, ULONG_PTR extraInfo) {
    const bool up = (flags & KEYEVENTF_KEYUP) != 0;
    INPUT& input = Current.Events[Current.Count++];
    input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = scanCode != 0 ? scanCode : static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags;
    input.ki.dwExtraInfo = extraInfo;
    const char character = layer::UsCharacter(key, Current.Shift);
    if (character != 0 && !GivesCharacter(key, Current.Shift, character)) {
        input.ki.wVk = 0;
        input.ki.wScan = static_cast<WORD>(character);
        input.ki.dwFlags = flags | KEYEVENTF_UNICODE;
    }
    if (key == VK_SHIFT) {
        Current.Shift = !up;
    }
    Current.Held += up ? -1 : 1;
    if (Current.Held <= 0 || key == VK_TAB || Current.Count == Current.Events.size()) {
        Send();
        Current.Held = std::max(Current.Held, 0);
    }
}

// A stroke costs no more by itself.
KeyBurst::KeyBurst() = default;
KeyBurst::~KeyBurst() = default;

KeysGoTo WhoTakesKeys() {
    return KeysGoTo::Windows;
}
