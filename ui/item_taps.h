// What a tap on an item of a settings tree changes. Main thread.
#pragma once

#include "ui/tree_view.h"

struct Tap {
    DWORD PageBase;
    HWND Page;
    HWND Tree;
    HTREEITEM Handle;
    TreeItem Item;
    bool OnImage;
};

// Switches a switch, chooses a choice, edits a number or a text, and selects the item. 0 when an operation of
// the tree failed; values already written stay written.
int TapItem(const Tap& tap);

// The parts of TapItem that change the record. They give the image that the item gets, or None on failure.
ItemImage TapChoice(const Tap& tap);
ItemImage TapSwitch(const Tap& tap);

// Runs the editor of a text or number item and takes its result over. 0 when an operation of the tree failed.
int EditItem(const Tap& tap);
