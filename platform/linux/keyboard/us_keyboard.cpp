#include "platform/linux/keyboard/us_keyboard.h"

#include <X11/keysym.h>

#include "platform/keyboard.h"

namespace layer {
namespace {

constexpr BYTE FirstFunctionKey = 0x70, LastFunctionKey = 0x87;

struct Pair {
    BYTE key;
    char plain, shifted;
};
constexpr Pair Characters[] = {
    {'0', '0', ')'},         {'1', '1', '!'},          {'2', '2', '@'},          {'3', '3', '#'},
    {'4', '4', '$'},         {'5', '5', '%'},          {'6', '6', '^'},          {'7', '7', '&'},
    {'8', '8', '*'},         {'9', '9', '('},          {VK_SPACE, ' ', ' '},     {VK_OEM_1, ';', ':'},
    {VK_OEM_PLUS, '=', '+'}, {VK_OEM_COMMA, ',', '<'}, {VK_OEM_MINUS, '-', '_'}, {VK_OEM_PERIOD, '.', '>'},
    {VK_OEM_2, '/', '?'},    {VK_OEM_3, '`', '~'},     {VK_OEM_4, '[', '{'},     {VK_OEM_5, '\\', '|'},
    {VK_OEM_6, ']', '}'},    {VK_OEM_7, '\'', '"'},
};

}  // namespace

KeyMeaning MeaningOf(BYTE virtualKey, bool shift) {
    if (virtualKey >= 'A' && virtualKey <= 'Z') {
        return {static_cast<KeySym>(shift ? virtualKey : virtualKey - 'A' + 'a'), NoSymbol, true};
    }
    for (const Pair& pair : Characters) {
        if (pair.key == virtualKey) {
            return {static_cast<KeySym>(shift ? pair.shifted : pair.plain), NoSymbol, true};
        }
    }
    if (virtualKey >= FirstFunctionKey && virtualKey <= LastFunctionKey) {
        return {static_cast<KeySym>(XK_F1 + (virtualKey - FirstFunctionKey)), NoSymbol, false};
    }
    switch (virtualKey) {
        case VK_RETURN:
            return {XK_Return, NoSymbol, false};
        case VK_TAB:
            return {XK_Tab, NoSymbol, false};
        case VK_ESCAPE:
            return {XK_Escape, NoSymbol, false};
        case VK_MULTIPLY:
            return {XK_KP_Multiply, XK_asterisk, true};
        case VK_ADD:
            return {XK_KP_Add, XK_plus, true};
        default:
            return {NoSymbol, NoSymbol, false};
    }
}

}  // namespace layer
