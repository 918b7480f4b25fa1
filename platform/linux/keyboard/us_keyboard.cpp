#include "platform/linux/keyboard/us_keyboard.h"

#include <X11/keysym.h>

#include "platform/us_keyboard.h"

namespace layer {
namespace {

constexpr BYTE FirstFunctionKey = 0x70, LastFunctionKey = 0x87;

}  // namespace

KeyMeaning MeaningOf(BYTE virtualKey, bool shift) {
    if (const char character = UsCharacter(virtualKey, shift)) {
        return {static_cast<KeySym>(character), NoSymbol, true};
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
