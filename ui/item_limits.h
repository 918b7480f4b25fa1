// What a number or a text may be. Main thread.
#pragma once

#include "settings/field.h"

// Sets ShellState.EditorMax and EditorMin: of a number the largest and smallest value, of a text the greatest
// and smallest length. They stay as they are for items of other kinds.
void GetItemLimits(DWORD pageBase, DWORD itemId);

// In what a number is counted; the decode timeout by the barcode reader that is fitted.
NumberUnit ItemUnit(DWORD pageBase, DWORD itemId);

// How many digits the largest number has, 1 to 3.
int DigitsOf(int maximum);
