// Key strokes for the application in front.
#pragma once

#include <span>

#include "platform/base.h"

struct KeyStroke {
    BYTE Key;  // virtual key; 0 when no key types the byte
    bool Shift;
};

// Which key of a US keyboard types a byte. Pure; any thread.
KeyStroke KeyForByte(BYTE value);

// The turn of one scan at the keyboard, for as long as this lives: the keys of two scans that arrive together
// would spoil both. False when the scan's reader was switched off before its turn came.
class TypingTurn {
  public:
    TypingTurn();
    ~TypingTurn();
    TypingTurn(const TypingTurn&) = delete;
    TypingTurn& operator=(const TypingTurn&) = delete;
    explicit operator bool() const { return mine_; }

  private:
    const bool mine_;
};

// Presses and releases the key of each byte, with Shift where it takes one; a byte without a key is skipped.
// False when the reader has been switched off, which ends the line between two characters.
bool TypeBytes(std::span<const BYTE> bytes);
// Presses the Tab key for 5 ms; false as above.
bool PressTab();
