// Key strokes for the application in front.
#pragma once

#include <span>

#include "platform/base.h"

// The turn of one scan at the keyboard, for as long as this lives: the keys of two scans that arrive together
// would spoil both. A turn is waited for 5 s at most; after that the other reader's thread is taken to be
// held up (it may be suspended in the middle of its line), and a scan that mixes is better than one that is
// lost.
class TypingTurn {
  public:
    TypingTurn();
    ~TypingTurn();
    TypingTurn(const TypingTurn&) = delete;
    TypingTurn& operator=(const TypingTurn&) = delete;

  private:
    bool mine_;
};

// Presses and releases the key of each byte, with Shift where it takes one; a byte without a key is skipped.
void TypeBytes(std::span<const BYTE> bytes);
// Presses the Tab key for 5 ms.
void PressTab();
