#include "platform/text.h"
#include "resources/resource.h"
#include "settings/field.h"
#include "shell/shell_state.h"
#include "ui/editor_dialog.h"
#include "ui/editors.h"
#include "ui/item_limits.h"
#include "ui/item_value.h"

namespace {

constexpr int MaxHint = 64;

void OnInit(HWND dialog, const EditedItem& item) {
    ShellState.EditorDialog = dialog;
    GetItemLimits(item.PageBase, item.ItemId);
    ShowCaption(dialog, item.PageBase, item.ItemId);
    SendDlgItemMessageW(dialog, IDC_EDIT, EM_LIMITTEXT, static_cast<WPARAM>(ShellState.EditorMax), 0);
    SetDlgItemTextW(dialog, IDC_EDIT, ReadItem(item.PageBase, item.ItemId).Text.data());
    WCHAR hint[MaxHint];
    wsprintfW(hint, TEXT("%d ~ %d character(s)"), ShellState.EditorMin, ShellState.EditorMax);
    SetDlgItemTextW(dialog, IDC_TEXT, hint);
}

bool IsFirstHalf(WCHAR character) {
    return (character & 0xFC00) == 0xD800;
}

// Reads the edit into EditorText; true when it had to be cut to the limit. A character of two words is never
// cut in half.
bool TakeText(HWND dialog) {
    WCHAR text[TextWords + 1] = {};
    const int length = static_cast<int>(GetDlgItemTextW(dialog, IDC_EDIT, text, TextWords + 1));
    int kept = length > ShellState.EditorMax ? ShellState.EditorMax : length;
    if (kept > 0 && IsFirstHalf(text[kept - 1])) {
        --kept;
    }
    lstrcpynW(ShellState.EditorText, text, kept + 1);
    return kept < length;
}

}  // namespace

INT_PTR CALLBACK TextEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            OnInit(dialog, EditedBy(lParam));
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_EDIT && HIWORD(wParam) == EN_CHANGE) {
                if (TakeText(dialog)) {
                    SetDlgItemTextW(dialog, IDC_EDIT, ShellState.EditorText);
                }
            } else if (LOWORD(wParam) == IDOK) {
                TakeText(dialog);
                EndEditor(dialog, IDOK);
            } else if (LOWORD(wParam) == IDCANCEL) {
                EndEditor(dialog, IDCANCEL);
            }
            return 1;
        case WM_CLOSE:
            EndEditor(dialog, IDCANCEL);
            return 1;
        case WM_DESTROY:
            ForgetEditor(dialog);
            return 0;
        default:
            return 0;
    }
}
