#include "ui/editor_dialog.h"

#include "platform/controls.h"
#include "platform/text.h"
#include "shell/shell_state.h"
#include "ui/item_display.h"
#include "ui/item_limits.h"

namespace {

constexpr int NumberText = 12;  // room for any double word

}  // namespace

EditedItem EditedBy(LPARAM parameter) {
    return {HIWORD(parameter), LOWORD(parameter)};
}

void ShowCaption(HWND dialog, DWORD pageBase, DWORD itemId) {
    WCHAR label[MaxLabel + 1];
    GetItemLabel(pageBase, itemId, label);
    SetWindowTextW(dialog, label);
}

void EndEditor(HWND dialog, int result) {
    ForgetEditor(dialog);
    EndDialog(dialog, result);
}

void ForgetEditor(HWND dialog) {
    if (ShellState.EditorDialog == dialog) {
        ShellState.EditorDialog = nullptr;
    }
}

void SetUpNumberEdit(HWND dialog, int edit, int upDown, WORD number) {
    SendDlgItemMessageW(dialog, upDown, UDM_SETRANGE32, static_cast<WPARAM>(ShellState.EditorMin),
                        ShellState.EditorMax);
    SetDlgItemInt(dialog, edit, number, FALSE);
    SendDlgItemMessageW(dialog, edit, EM_LIMITTEXT, static_cast<WPARAM>(DigitsOf(ShellState.EditorMax)), 0);
}

void CorrectNumberEdit(HWND dialog, int edit) {
    BOOL isNumber = FALSE;
    const UINT number = GetDlgItemInt(dialog, edit, &isNumber, FALSE);
    const UINT minimum = static_cast<UINT>(ShellState.EditorMin);
    const UINT maximum = static_cast<UINT>(ShellState.EditorMax);
    if (!isNumber || number < minimum) {
        SetDlgItemInt(dialog, edit, minimum, FALSE);
        return;
    }
    if (number > maximum) {
        SetDlgItemInt(dialog, edit, maximum, FALSE);
        return;
    }
    WCHAR text[NumberText] = {};
    WCHAR plain[NumberText] = {};
    GetDlgItemTextW(dialog, edit, text, NumberText);
    wsprintfW(plain, TEXT("%u"), number);
    if (lstrcmpW(text, plain) != 0) {
        SetDlgItemTextW(dialog, edit, plain);
    }
}

WORD ReadNumberEdit(HWND dialog, int edit) {
    return static_cast<WORD>(GetDlgItemInt(dialog, edit, nullptr, FALSE));
}
