// The keys that the user holds down while a key is typed for him.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace layer {

// The device whose map the synthetic keys go through, for XKB calls; the core keyboard where there is none.
unsigned XtestDevice(Display* display);

// Looks which modifier keys are down now, and whether `typed`, the key about to be typed, is.
class HeldKeys {
  public:
    HeldKeys(Display* display, XkbDescPtr map, KeyCode typed);
    // Lets go of them for the moment.
    void Release() const;
    // Presses the modifiers again that the user has not let go of meanwhile. The typed key stays up: pressing
    // it would type it once more.
    void Restore() const;

  private:
    static constexpr int Most = 16;
    // Whether a real keyboard has the key down; `real` says whether one had it down at first.
    bool DownOnRealKeyboard(KeyCode key) const;

    Display* const display_;
    const KeyCode typed_;
    bool typedDown_ = false;
    KeyCode keys_[Most];
    bool real_[Most];
    int count_ = 0;
};

}  // namespace layer
