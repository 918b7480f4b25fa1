#include "resources/resource.h"
#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/editor_dialog.h"
#include "ui/editors.h"
#include "ui/item_limits.h"
#include "ui/item_value.h"
#include "ui/length_items.h"

namespace {

void OnInit(HWND dialog, const EditedItem& item) {
    ShellState.EditorDialog = dialog;
    GetItemLimits(item.PageBase, item.ItemId);
    const DWORD group = SplitItemId(item.PageBase, item.ItemId).Group;
    ShowCaption(dialog, item.PageBase, group);
    const bool range = IsLengthRange(item.PageBase, group) != 0;
    SetDlgItemTextW(dialog, IDC_TEXT, range ? TEXT("Max Len") : TEXT("Value 1"));
    SetDlgItemTextW(dialog, IDC_TEXT_2, range ? TEXT("Min Len") : TEXT("Value 2"));
    const LengthPair pair = GetLengthPair(item.PageBase, item.ItemId);
    SetUpNumberEdit(dialog, IDC_EDIT, IDC_UPDOWN, ReadItemWord(item.PageBase, pair.First));
    SetUpNumberEdit(dialog, IDC_EDIT_2, IDC_UPDOWN_2, ReadItemWord(item.PageBase, pair.Second));
}

}  // namespace

INT_PTR CALLBACK PairEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            OnInit(dialog, EditedBy(lParam));
            return 0;
        case WM_COMMAND: {
            const int id = LOWORD(wParam);
            if ((id == IDC_EDIT || id == IDC_EDIT_2) && HIWORD(wParam) == EN_CHANGE) {
                CorrectNumberEdit(dialog, id);
            } else if (id == IDOK) {
                ShellState.EditorText[0] = static_cast<WCHAR>(ReadNumberEdit(dialog, IDC_EDIT));
                ShellState.EditorText[1] = static_cast<WCHAR>(ReadNumberEdit(dialog, IDC_EDIT_2));
                EndEditor(dialog, IDOK);
            } else if (id == IDCANCEL) {
                EndEditor(dialog, IDCANCEL);
            }
            return 1;
        }
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
