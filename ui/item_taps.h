// What a tap on an item of a settings tree changes, and the small dialogs in which it is edited. Main thread.
#pragma once

#include "platform/window.h"
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

// The editors of a text, a number or a pair of lengths. They run modally with
// lParam = page base * 0x10000 + item, keep themselves as ShellState.EditorDialog, and end with IDOK or
// IDCANCEL. They leave their result in ShellState.EditorText and write no setting.
// Result: the text.
INT_PTR CALLBACK TextEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
// Result: the number in word 0.
INT_PTR CALLBACK NumberEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
// Result: the first and the second number in words 0 and 1, as they were entered.
INT_PTR CALLBACK PairEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
