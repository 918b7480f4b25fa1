// The small dialogs in which a text, a number or a pair of lengths is edited. They run modally with
// lParam = page base * 0x10000 + item, keep themselves as ShellState.EditorDialog, and end with IDOK or
// IDCANCEL. They leave their result in ShellState.EditorText and write no setting. Main thread.
#pragma once

#include "platform/window.h"

// Result: the text.
INT_PTR CALLBACK TextEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
// Result: the number in word 0.
INT_PTR CALLBACK NumberEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
// Result: the first and the second number in words 0 and 1, as they were entered.
INT_PTR CALLBACK PairEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
