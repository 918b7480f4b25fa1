// The keys that the user holds down while a key is typed for him.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <bitset>

namespace layer {

// The device whose map the synthetic keys go through, for XKB calls; the core keyboard where there is none.
unsigned XtestDevice(Display* display);

// Presses a key of that device. It may count as down there though the key is up for everybody: the user let
// go of what had been pressed again for him.
void PressSynthetic(Display* display, KeyCode key);

// Looks which modifier keys are down now, and whether `typed`, the key about to be typed, is.
class HeldKeys {
  public:
    HeldKeys(Display* display, XkbDescPtr map, KeyCode typed);
    // Lets go of them for the moment.
    void Release() const;
    // Presses the modifiers again that the user has not let go of meanwhile, and notes those of a real
    // keyboard in `again`. The typed key stays up: pressing it would type it once more.
    void Restore(std::bitset<256>& again) const;
    // Lets go of noted keys that the user has let go of since; for everybody else they are up already.
    static void Forget(Display* display, std::bitset<256>& again);

  private:
    static constexpr int Most = 16;
    Display* const display_;
    const KeyCode typed_;
    bool typedDown_ = false;
    KeyCode keys_[Most];
    bool real_[Most];  // held on a real keyboard, not by another program
    int count_ = 0;
};

}  // namespace layer
