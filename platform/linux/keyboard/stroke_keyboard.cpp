#include "platform/linux/keyboard/stroke_keyboard.h"

#include <algorithm>
#include <thread>

#include "platform/keyboard.h"

namespace layer {

void StrokeKeyboard::WaitForRoom() {
    paidUntil_ = std::max(paidUntil_, Clock::now()) + rate_.Pause;
    std::this_thread::sleep_until(paidUntil_ - rate_.Burst * rate_.Pause);
}

void StrokeKeyboard::Key(BYTE key, bool up) {
    if (key == VK_SHIFT) {
        shift_ = !up;
    }
    if (key == VK_SHIFT || up || !Ready()) {
        return;
    }
    const LayoutStroke stroke = keys_.For(key, shift_, CapsLock());
    for (const LayoutKey& part : stroke.All()) {
        WaitForRoom();
        Press(part);
    }
}

}  // namespace layer
