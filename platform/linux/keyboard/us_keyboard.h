// What a virtual key means on a US keyboard.
#pragma once

#include <X11/X.h>

#include "platform/base.h"

namespace layer {

struct KeyMeaning {
    KeySym symbol;      // what to produce; NoSymbol: a key that means nothing here
    KeySym substitute;  // when no key gives the symbol; NoSymbol: none
    bool isCharacter;   // the Shift key is part of the symbol, not to be seen beside it
};
KeyMeaning MeaningOf(BYTE virtualKey, bool shift);

}  // namespace layer
