#include "scan/typing.h"

#include <atomic>

#include "platform/kernel.h"
#include "platform/keyboard.h"
#include "scan/key_map.h"

namespace {

constexpr DWORD LongestTurn = 5000;  // ms
constexpr DWORD TabPress = 5;        // ms

// An event that is signalled while nobody types. Made by the first scan, never closed; null only when the
// platform has no room for it, and then nobody waits.
HANDLE KeyboardFree() {
    static std::atomic<HANDLE> shared = nullptr;
    HANDLE event = shared.load(std::memory_order_acquire);
    if (event != nullptr) {
        return event;
    }
    const HANDLE made = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    if (shared.compare_exchange_strong(event, made, std::memory_order_acq_rel)) {
        return made;
    }
    // The other reader's thread was faster.
    if (made != nullptr) {
        CloseHandle(made);
    }
    return event;
}

void KeyDown(BYTE key) {
    keybd_event(key, 0, 0, 0);
}
void KeyUp(BYTE key) {
    keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
}

}  // namespace

TypingTurn::TypingTurn() : mine_(WaitForSingleObject(KeyboardFree(), LongestTurn) == WAIT_OBJECT_0) {}

TypingTurn::~TypingTurn() {
    if (mine_) {
        EventModify(KeyboardFree(), EVENT_SET);
    }
}

void TypeBytes(std::span<const BYTE> bytes) {
    for (const BYTE value : bytes) {
        const KeyStroke stroke = KeyForByte(value);
        if (stroke.Key == 0) {
            continue;
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
}

void PressTab() {
    KeyDown(VK_TAB);
    Sleep(TabPress);
    KeyUp(VK_TAB);
}
