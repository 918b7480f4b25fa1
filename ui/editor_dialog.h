// What the editors have in common. Main thread.
#pragma once

#include "platform/window.h"

struct EditedItem {
    DWORD PageBase;
    DWORD ItemId;
};
EditedItem EditedBy(LPARAM parameter);

void ShowCaption(HWND dialog, DWORD pageBase, DWORD itemId);
void EndEditor(HWND dialog, int result);
// What every editor does with WM_DESTROY, however it goes.
void ForgetEditor(HWND dialog);

// Prepares the number edit and its up-down control for ShellState.EditorMin to EditorMax.
void SetUpNumberEdit(HWND dialog, int edit, int upDown, WORD number);
// Puts the edit's contents right: a number within the limits without leading zeros.
void CorrectNumberEdit(HWND dialog, int edit);
WORD ReadNumberEdit(HWND dialog, int edit);
