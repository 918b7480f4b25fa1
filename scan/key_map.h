// Which key of a US keyboard types a byte. Pure; any thread.
#pragma once

#include "platform/base.h"

struct KeyStroke {
    BYTE Key;  // virtual key; 0 when no key types the byte
    bool Shift;
};

KeyStroke KeyForByte(BYTE value);
