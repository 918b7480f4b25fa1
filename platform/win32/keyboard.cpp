// Typed keys: the application in front gets the character that a US keyboard would give, whatever its layout.
#include <algorithm>
#include <array>
#include <utility>

#include "platform/keyboard.h"

namespace {

struct UsKey {
    BYTE Key;
    char Plain, Shifted;
};

constexpr std::array<UsKey, 21> UsKeys = {{
    {'0', '0', ')'},          {'1', '1', '!'},          {'2', '2', '@'},           {'3', '3', '#'},
    {'4', '4', '$'},          {'5', '5', '%'},          {'6', '6', '^'},           {'7', '7', '&'},
    {'8', '8', '*'},          {'9', '9', '('},          {VK_OEM_1, ';', ':'},      {VK_OEM_PLUS, '=', '+'},
    {VK_OEM_COMMA, ',', '<'}, {VK_OEM_MINUS, '-', '_'}, {VK_OEM_PERIOD, '.', '>'}, {VK_OEM_2, '/', '?'},
    {VK_OEM_3, '`', '~'},     {VK_OEM_4, '[', '{'},     {VK_OEM_5, '\\', '|'},     {VK_OEM_6, ']', '}'},
    {VK_OEM_7, '\'', '"'},
}};

// A stroke goes out as one, from its first key down to its last key up: no program that is paused or killed
// leaves a key down. Only Tab is held.
struct Stroke {
    std::array<INPUT, 8> Events{};
    UINT Count = 0;
    int Held = 0;  // keys
    bool Shift = false;
};
thread_local Stroke Current;

// 0 for a key without a character of its own on a US keyboard.
char UsCharacter(BYTE key, bool shift) {
    if (key >= 'A' && key <= 'Z') {
        return static_cast<char>(shift ? key : key - 'A' + 'a');
    }
    for (const UsKey& entry : UsKeys) {
        if (entry.Key == key) {
            return shift ? entry.Shifted : entry.Plain;
        }
    }
    return 0;
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
    const char character = UsCharacter(key, Current.Shift);
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
        SendInput(std::exchange(Current.Count, 0), Current.Events.data(), sizeof input);
        Current.Held = std::max(Current.Held, 0);
    }
}

KeysGoTo WhoTakesKeys() {
    return KeysGoTo::Windows;
}
