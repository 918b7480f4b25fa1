#include "scan/typing.h"

#include <algorithm>
#include <array>

#include "link/reading.h"
#include "link/turn.h"
#include "platform/kernel.h"
#include "platform/keyboard.h"

namespace {

// A key of the main keyboard with the characters on it; 0 where the character is typed elsewhere or not at
// all.
struct MarkKey {
    BYTE Key;
    char Plain, Shifted;
};

// "*" and "+" go to the keypad, so that they need no Shift.
constexpr MarkKey MarkKeys[] = {
    {'1', '1', '!'},          {'2', '2', '@'},          {'3', '3', '#'},           {'4', '4', '$'},
    {'5', '5', '%'},          {'6', '6', '^'},          {'7', '7', '&'},           {'8', '8', 0},
    {'9', '9', '('},          {'0', '0', ')'},          {VK_RETURN, '\r', 0},      {VK_SPACE, ' ', 0},
    {VK_MULTIPLY, '*', 0},    {VK_ADD, '+', 0},         {VK_OEM_1, ';', ':'},      {VK_OEM_PLUS, '=', 0},
    {VK_OEM_COMMA, ',', '<'}, {VK_OEM_MINUS, '-', '_'}, {VK_OEM_PERIOD, '.', '>'}, {VK_OEM_2, '/', '?'},
    {VK_OEM_3, '`', '~'},     {VK_OEM_4, '[', '{'},     {VK_OEM_5, '\\', '|'},     {VK_OEM_6, ']', '}'},
    {VK_OEM_7, '\'', '"'},
};

constexpr std::array<KeyStroke, 256> BuildKeyMap() {
    std::array<KeyStroke, 256> map{};
    for (int letter = 'A'; letter <= 'Z'; ++letter) {
        map[letter] = {static_cast<BYTE>(letter), true};
        map[letter - 'A' + 'a'] = {static_cast<BYTE>(letter), false};
    }
    for (const MarkKey& mark : MarkKeys) {
        map[static_cast<BYTE>(mark.Plain)] = {mark.Key, false};
        if (mark.Shifted != 0) {
            map[static_cast<BYTE>(mark.Shifted)] = {mark.Key, true};
        }
    }
    return map;
}

constexpr std::array<KeyStroke, 256> KeyMap = BuildKeyMap();

constexpr DWORD TabPress = 5;  // ms
// Go out at once: a label, as a rule. A reader that is switched off is waited for no longer than these take.
constexpr std::size_t CharactersAStep = 16;

Turn KeyboardTurn;

void KeyDown(BYTE key) {
    keybd_event(key, 0, 0, 0);
}
void KeyUp(BYTE key) {
    keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
}

void TypeByte(BYTE value) {
    const KeyStroke stroke = KeyForByte(value);
    if (stroke.Key == 0) {
        return;
    }
    if (stroke.Shift) {
        KeyDown(VK_SHIFT);
    }
    KeyDown(stroke.Key);
    KeyUp(stroke.Key);
    if (stroke.Shift) {
        KeyUp(VK_SHIFT);
    }
}

}  // namespace

KeyStroke KeyForByte(BYTE value) {
    return KeyMap[value];
}

TypingTurn::TypingTurn() : mine_(KeyboardTurn.TakeWhile(ReadingLasts)) {}

TypingTurn::~TypingTurn() {
    if (mine_) {
        KeyboardTurn.Give();
    }
}

bool TypeBytes(std::span<const BYTE> bytes) {
    while (!bytes.empty()) {
        const ReadingStep step;
        if (!step) {
            return false;
        }
        const KeyBurst burst;
        const auto now = bytes.first(std::min(bytes.size(), CharactersAStep));
        std::ranges::for_each(now, TypeByte);
        bytes = bytes.subspan(now.size());
    }
    return ReadingLasts();
}

bool PressTab() {
    const ReadingStep step;
    if (!step) {
        return false;
    }
    KeyDown(VK_TAB);
    Sleep(TabPress);
    KeyUp(VK_TAB);
    return true;
}
