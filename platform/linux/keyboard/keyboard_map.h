// Which key of the X keyboard gives a symbol. Looks at a map only; talks to no server.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

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

}  // namespace layer
