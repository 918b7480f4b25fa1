// The characters of a US keyboard, which keys are meant for.
#pragma once

#include "platform/keyboard.h"

namespace layer {

struct UsKey {
    BYTE Key;
    char Plain, Shifted;
};
inline constexpr UsKey UsKeys[] = {
    {'0', '0', ')'},         {'1', '1', '!'},          {'2', '2', '@'},          {'3', '3', '#'},
    {'4', '4', '$'},         {'5', '5', '%'},          {'6', '6', '^'},          {'7', '7', '&'},
    {'8', '8', '*'},         {'9', '9', '('},          {VK_SPACE, ' ', ' '},     {VK_OEM_1, ';', ':'},
    {VK_OEM_PLUS, '=', '+'}, {VK_OEM_COMMA, ',', '<'}, {VK_OEM_MINUS, '-', '_'}, {VK_OEM_PERIOD, '.', '>'},
    {VK_OEM_2, '/', '?'},    {VK_OEM_3, '`', '~'},     {VK_OEM_4, '[', '{'},     {VK_OEM_5, '\\', '|'},
    {VK_OEM_6, ']', '}'},    {VK_OEM_7, '\'', '"'},
};

// The character of a virtual key; 0 for one that has none.
constexpr char UsCharacter(BYTE key, bool shift) {
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

}  // namespace layer
