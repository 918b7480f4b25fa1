// Reading and writing the value of one setting item, and what it may be; the two lengths of a symbology and
// the list that says how they are used. Main thread.
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

// Item numbers of the two lengths of a group, in the order in which they are shown.
struct LengthPair {
    DWORD First = 0;
    DWORD Second = 0;
    explicit operator bool() const { return First != 0; }
};

// The pair of the item's group; an empty one where the group has none.
LengthPair GetLengthPair(DWORD pageBase, DWORD itemId);

// Whether the group's two lengths are a maximum and a minimum.
int IsLengthRange(DWORD pageBase, DWORD itemId);

// Whether the page shows the item: of a packet reader's symbology, a length counts only in some modes.
int IsLengthItemVisible(DWORD pageBase, DWORD itemId);

// Whether the item is a list that says how its group's lengths are used.
bool IsLengthMode(DWORD pageBase, DWORD itemId);

inline constexpr int NoEditor = 0;

// The dialog that edits a number: IDD_NUMBER_EDITOR, IDD_PAIR_EDITOR, or NoEditor.
int ChooseNumberEditor(DWORD pageBase, DWORD itemId);
