#include "platform/text.h"
#include "resources/resource.h"
#include "shell/shell_state.h"
#include "ui/editor_dialog.h"
#include "ui/editors.h"
#include "ui/item_limits.h"
#include "ui/item_value.h"

namespace {

constexpr int MaxHint = 64;

LPCWSTR HintFor(NumberUnit unit) {
    switch (unit) {
        case NumberUnit::Seconds:
            return TEXT("%d ~ %d seconds");
        case NumberUnit::TenthsOfSecond:
            return TEXT("Range: %d ~ %d (0.1sec)");
        case NumberUnit::None:
            break;
    }
    return TEXT("Range: %d ~ %d");
}

void OnInit(HWND dialog, const EditedItem& item) {
    ShellState.EditorDialog = dialog;
    GetItemLimits(item.PageBase, item.ItemId);
    ShowCaption(dialog, item.PageBase, item.ItemId);
    WCHAR hint[MaxHint];
    wsprintfW(hint, HintFor(ItemUnit(item.PageBase, item.ItemId)), ShellState.EditorMin,
              ShellState.EditorMax);
    SetDlgItemTextW(dialog, IDC_TEXT, hint);
    SetUpNumberEdit(dialog, IDC_EDIT, IDC_UPDOWN, ReadItemWord(item.PageBase, item.ItemId));
}

}  // namespace

INT_PTR CALLBACK NumberEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            OnInit(dialog, EditedBy(lParam));
            return 1;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_EDIT && HIWORD(wParam) == EN_CHANGE) {
                CorrectNumberEdit(dialog, IDC_EDIT);
            } else if (LOWORD(wParam) == IDOK) {
                ShellState.EditorText[0] = static_cast<WCHAR>(ReadNumberEdit(dialog, IDC_EDIT));
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
