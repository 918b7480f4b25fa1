#include "scan/typing.h"

#include "link/reading.h"
#include "link/turn.h"
#include "platform/kernel.h"
#include "platform/keyboard.h"
#include "scan/key_map.h"

namespace {

constexpr DWORD TabPress = 5;  // ms

Turn KeyboardTurn;

void KeyDown(BYTE key) {
    keybd_event(key, 0, 0, 0);
}
void KeyUp(BYTE key) {
    keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
}

}  // namespace

TypingTurn::TypingTurn() : mine_(KeyboardTurn.TakeWhile(ReadingLasts)) {}

TypingTurn::~TypingTurn() {
    if (mine_) {
        KeyboardTurn.Give();
    }
}

bool TypeBytes(std::span<const BYTE> bytes) {
    for (const BYTE value : bytes) {
        const KeyStroke stroke = KeyForByte(value);
        if (stroke.Key == 0) {
            continue;
        }
        const ReadingStep step;
        if (!step) {
            return false;
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
