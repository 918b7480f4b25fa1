// Which key of the X keyboard gives a symbol, and which keys the user holds while one is typed for him.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <bitset>

namespace layer {

struct KeyChoice {
    KeyCode key;
    unsigned press;   // modifiers to be held down: Shift, or what the third-level key sets
    unsigned locked;  // locked modifiers that the choice relies on; others have to go
};

// Finds a key that gives exactly the symbol to every client, with the modifiers that are locked now (Caps
// Lock, Num Lock) left alone when that works. `group` is the layout in force.
bool FindKey(XkbDescPtr map, KeySym symbol, unsigned locked, int group, KeyChoice& choice);
// The key that is held down to have the modifier, or 0.
KeyCode ModifierKey(XkbDescPtr map, unsigned modifier);
// The modifiers that the key sets while it is held; locking keys (Caps Lock, Num Lock) set none.
unsigned HeldModifier(XkbDescPtr map, KeyCode key);
// A key without any symbol or modifier that `taken` does not hold back, or 0.
KeyCode SpareKey(XkbDescPtr map, const bool (&taken)[256]);

inline constexpr int MaxLevels = 4;
struct SpareType {
    int type;    // index in the map
    int levels;  // symbols of a key: plain, Shift, third level, both
};
// The type that gives a spare key the most levels without any use of Caps Lock.
SpareType TypeForSpareKeys(XkbDescPtr map);
// Puts the symbols on the key, for every keyboard of the server.
void GiveSymbols(Display* display, XkbDescPtr map, KeyCode key, const SpareType& type,
                 const KeySym (&symbols)[MaxLevels]);

// The device whose map the synthetic keys go through, for XKB calls; the core keyboard where there is none.
unsigned XtestDevice(Display* display);

// Presses a key of that device. It may count as down there though the key is up for everybody: the user let
// go of what had been pressed again for him.
void PressSynthetic(Display* display, KeyCode key);

// Looks which modifier keys are down now.
class HeldKeys {
  public:
    HeldKeys(Display* display, XkbDescPtr map);
    // Lets go of them for the moment.
    void Release() const;
    // Presses the modifiers again that the user has not let go of meanwhile, and notes those of a real
    // keyboard in `again`.
    void Restore(std::bitset<256>& again) const;
    // Lets go of noted keys that the user has let go of since; for everybody else they are up already.
    static void Forget(Display* display, std::bitset<256>& again);

  private:
    static constexpr int Most = 16;
    Display* const display_;
    KeyCode keys_[Most];
    bool real_[Most];  // held on a real keyboard, not by another program
    int count_ = 0;
};

}  // namespace layer
