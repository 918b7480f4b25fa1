#include "scan/key_map.h"

#include <array>

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

}  // namespace

KeyStroke KeyForByte(BYTE value) {
    return KeyMap[value];
}
