// The two lengths of a symbology and the list that says how they are used. Main thread.
#pragma once

#include "platform/base.h"

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
