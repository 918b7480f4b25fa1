// How a setting item looks in its tree. Main thread.
#pragma once

#include "ui/item_value.h"
#include "ui/tree_view.h"

inline constexpr int MaxLabel = 50;  // characters

struct ItemDisplay {
    WCHAR Text[MaxLabel + 30] = {};  // label and value
    ItemValue Value;
    ItemImage Image = ItemImage::None;
    WORD ChoiceCount = 0;  // of a list
};

// An item that nobody knows has an empty label.
ItemDisplay GetItemDisplay(DWORD pageBase, DWORD itemId);

// The item's label, cut to MaxLabel characters.
void GetItemLabel(DWORD pageBase, DWORD itemId, WCHAR (&label)[MaxLabel + 1]);

// Whether the item is a list of which any number of choices can be on.
bool IsBitSet(DWORD pageBase, DWORD itemId);

// Inserts a list's choices under it. 1, or 0 when one could not be inserted.
int InsertChoiceItems(DWORD pageBase, HWND tree, HTREEITEM list, DWORD itemId, WORD choices);
