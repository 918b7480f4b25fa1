// Reading and writing the value of one setting item, and what it may be. Main thread.
#pragma once

#include <array>

#include "platform/base.h"
#include "settings/field.h"

using ItemBuffer = std::array<WCHAR, TextWords>;

// An item's value as its user sees it.
struct ItemValue {
    ItemBuffer Text{};  // of a text the text, of everything else the word and a zero
    WORD Word = 0;      // of a number the number, of everything else the first character
};

ItemValue ReadItem(DWORD pageBase, DWORD itemId);
WORD ReadItemWord(DWORD pageBase, DWORD itemId);

void WriteItemWord(DWORD pageBase, DWORD itemId, WORD value);
void WriteItemText(DWORD pageBase, DWORD itemId, const WCHAR (&text)[TextWords]);

// The choice that a list stands on; negative or too large where its word is none of its digits.
int ReadChoice(DWORD pageBase, DWORD itemId);

// Sets ShellState.EditorMax and EditorMin: of a number the largest and smallest value, of a text the greatest
// and smallest length. They stay as they are for items of other kinds.
void GetItemLimits(DWORD pageBase, DWORD itemId);

// In what a number is counted; the decode timeout by the barcode reader that is fitted.
NumberUnit ItemUnit(DWORD pageBase, DWORD itemId);

// How many digits the largest number has, 1 to 3.
int DigitsOf(int maximum);
