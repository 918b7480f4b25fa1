#include "ui/editors.h"

#include "platform/base.h"
#include "platform/controls.h"
#include "resources/resource.h"
#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/item_display.h"
#include "ui/item_value.h"

namespace {

constexpr int MaxHint = 64;
constexpr int NumberText = 12;  // room for any double word

struct EditedItem {
    DWORD PageBase;
    DWORD ItemId;
};

// What differs between the editors.
struct Editor {
    void (*Open)(HWND dialog, const EditedItem& item);
    void (*Change)(HWND dialog, int edit);  // after each change of an edit
    void (*TakeResult)(HWND dialog);        // into ShellState.EditorText
    bool FocusByDialog;                     // the dialog gives the focus to its first control
};

void ForgetEditor(HWND dialog) {
    if (ShellState.EditorDialog == dialog) {
        ShellState.EditorDialog = nullptr;
    }
}

void EndEditor(HWND dialog, int result) {
    ForgetEditor(dialog);
    EndDialog(dialog, result);
}

INT_PTR RunEditorProc(const Editor& editor, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG: {
            const EditedItem item = {HIWORD(lParam), LOWORD(lParam)};
            ShellState.EditorDialog = dialog;
            GetItemLimits(item.PageBase, item.ItemId);
            editor.Open(dialog, item);
            return editor.FocusByDialog ? 1 : 0;
        }
        case WM_COMMAND: {
            const int id = LOWORD(wParam);
            if ((id == IDC_EDIT || id == IDC_EDIT_2) && HIWORD(wParam) == EN_CHANGE) {
                editor.Change(dialog, id);
            } else if (id == IDOK) {
                editor.TakeResult(dialog);
                EndEditor(dialog, IDOK);
            } else if (id == IDCANCEL) {
                EndEditor(dialog, IDCANCEL);
            }
            return 1;
        }
        case WM_CLOSE:
            EndEditor(dialog, IDCANCEL);
            return 1;
        case WM_DESTROY:  // however it goes
            ForgetEditor(dialog);
            return 0;
        default:
            return 0;
    }
}

void ShowCaption(HWND dialog, DWORD pageBase, DWORD itemId) {
    WCHAR label[MaxLabel + 1];
    GetItemLabel(pageBase, itemId, label);
    SetWindowTextW(dialog, label);
}

// ---- texts

void OpenText(HWND dialog, const EditedItem& item) {
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
bool CutText(HWND dialog) {
    WCHAR text[TextWords + 1] = {};
    const int length = static_cast<int>(GetDlgItemTextW(dialog, IDC_EDIT, text, TextWords + 1));
    int kept = length > ShellState.EditorMax ? ShellState.EditorMax : length;
    if (kept > 0 && IsFirstHalf(text[kept - 1])) {
        --kept;
    }
    lstrcpynW(ShellState.EditorText, text, kept + 1);
    return kept < length;
}

void ChangeText(HWND dialog, int edit) {
    if (CutText(dialog)) {
        SetDlgItemTextW(dialog, edit, ShellState.EditorText);
    }
}

void TakeText(HWND dialog) {
    CutText(dialog);
}

// ---- numbers

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

// Prepares an edit and its up-down control for ShellState.EditorMin to EditorMax.
void SetUpNumberEdit(HWND dialog, int edit, int upDown, WORD number) {
    SendDlgItemMessageW(dialog, upDown, UDM_SETRANGE32, static_cast<WPARAM>(ShellState.EditorMin),
                        ShellState.EditorMax);
    SetDlgItemInt(dialog, edit, number, FALSE);
    SendDlgItemMessageW(dialog, edit, EM_LIMITTEXT, static_cast<WPARAM>(DigitsOf(ShellState.EditorMax)), 0);
}

void OpenNumber(HWND dialog, const EditedItem& item) {
    ShowCaption(dialog, item.PageBase, item.ItemId);
    WCHAR hint[MaxHint];
    wsprintfW(hint, HintFor(ItemUnit(item.PageBase, item.ItemId)), ShellState.EditorMin,
              ShellState.EditorMax);
    SetDlgItemTextW(dialog, IDC_TEXT, hint);
    SetUpNumberEdit(dialog, IDC_EDIT, IDC_UPDOWN, ReadItemWord(item.PageBase, item.ItemId));
}

void OpenPair(HWND dialog, const EditedItem& item) {
    const DWORD group = SplitItemId(item.PageBase, item.ItemId).Group;
    ShowCaption(dialog, item.PageBase, group);
    const bool range = IsLengthRange(item.PageBase, group) != 0;
    SetDlgItemTextW(dialog, IDC_TEXT, range ? TEXT("Max Len") : TEXT("Value 1"));
    SetDlgItemTextW(dialog, IDC_TEXT_2, range ? TEXT("Min Len") : TEXT("Value 2"));
    const LengthPair pair = GetLengthPair(item.PageBase, item.ItemId);
    SetUpNumberEdit(dialog, IDC_EDIT, IDC_UPDOWN, ReadItemWord(item.PageBase, pair.First));
    SetUpNumberEdit(dialog, IDC_EDIT_2, IDC_UPDOWN_2, ReadItemWord(item.PageBase, pair.Second));
}

// Puts the edit's contents right: a number within the limits without leading zeros.
void CorrectNumber(HWND dialog, int edit) {
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

WCHAR ReadNumber(HWND dialog, int edit) {
    return static_cast<WCHAR>(GetDlgItemInt(dialog, edit, nullptr, FALSE));
}

void TakeNumber(HWND dialog) {
    ShellState.EditorText[0] = ReadNumber(dialog, IDC_EDIT);
}

void TakePair(HWND dialog) {
    ShellState.EditorText[0] = ReadNumber(dialog, IDC_EDIT);
    ShellState.EditorText[1] = ReadNumber(dialog, IDC_EDIT_2);
}

}  // namespace

INT_PTR CALLBACK TextEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    static constexpr Editor editor = {OpenText, ChangeText, TakeText, false};
    return RunEditorProc(editor, dialog, message, wParam, lParam);
}

INT_PTR CALLBACK NumberEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    static constexpr Editor editor = {OpenNumber, CorrectNumber, TakeNumber, true};
    return RunEditorProc(editor, dialog, message, wParam, lParam);
}

INT_PTR CALLBACK PairEditorProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    static constexpr Editor editor = {OpenPair, CorrectNumber, TakePair, false};
    return RunEditorProc(editor, dialog, message, wParam, lParam);
}
