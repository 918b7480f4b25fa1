#include <algorithm>
#include <utility>

#include "resources/resource.h"
#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/editors.h"
#include "ui/item_taps.h"
#include "ui/item_value.h"
#include "ui/length_items.h"
#include "ui/page_tree.h"

namespace {

// Runs an editor; true when it was closed with OK. Its page may be gone afterwards: while the editor is open,
// an error or the end of the program take the sheet away. A second start waits for its end.
bool RunEditor(const Tap& tap, int dialog, DLGPROC procedure) {
    const LPARAM item = MAKELPARAM(tap.Item.Parameter, tap.PageBase);
    ++ShellState.EditorLoops;
    const INT_PTR result =
        DialogBoxParamW(ShellState.Instance, MAKEINTRESOURCEW(dialog), tap.Page, procedure, item);
    if (--ShellState.EditorLoops == 0 && std::exchange(ShellState.ReopenSettings, 0u)) {
        PostMessageW(ShellState.MainWindow, WM_OPENSETTINGS, 0, 0);
    }
    return result == IDOK && IsWindow(tap.Tree);
}

void ClearEditorText() {
    std::fill(std::begin(ShellState.EditorText), std::end(ShellState.EditorText), WCHAR{0});
}

int EditText(const Tap& tap) {
    if (!RunEditor(tap, IDD_TEXT_EDITOR, TextEditorProc)) {
        return 1;
    }
    WriteItemText(tap.PageBase, tap.Item.Parameter, ShellState.EditorText);
    ClearEditorText();
    return RefreshTreeItem(tap.PageBase, tap.Tree, tap.Handle, tap.Item.Parameter);
}

int EditNumber(const Tap& tap) {
    if (!RunEditor(tap, IDD_NUMBER_EDITOR, NumberEditorProc)) {
        return 1;
    }
    WriteItemWord(tap.PageBase, tap.Item.Parameter, static_cast<WORD>(ShellState.EditorText[0]));
    ClearEditorText();
    return RefreshTreeItem(tap.PageBase, tap.Tree, tap.Handle, tap.Item.Parameter);
}

int EditPair(const Tap& tap) {
    if (!RunEditor(tap, IDD_PAIR_EDITOR, PairEditorProc)) {
        return 1;
    }
    const WORD one = static_cast<WORD>(ShellState.EditorText[0]);
    const WORD other = static_cast<WORD>(ShellState.EditorText[1]);
    ClearEditorText();
    const LengthPair pair = GetLengthPair(tap.PageBase, tap.Item.Parameter);
    const bool tappedFirst = tap.Item.Parameter == pair.First;
    HTREEITEM neighbour =
        tappedFirst ? NextAfter(tap.Tree, tap.Handle) : PreviousBefore(tap.Tree, tap.Handle);
    if (!neighbour) {
        return 0;
    }
    WriteItemWord(tap.PageBase, pair.First, std::max(one, other));
    WriteItemWord(tap.PageBase, pair.Second, std::min(one, other));
    const DWORD neighbourId = tappedFirst ? pair.Second : pair.First;
    return RefreshTreeItem(tap.PageBase, tap.Tree, tap.Handle, tap.Item.Parameter) &&
           RefreshTreeItem(tap.PageBase, tap.Tree, neighbour, neighbourId);
}

}  // namespace

int EditItem(const Tap& tap) {
    if (tap.Item.Image == ItemImage::Text) {
        return EditText(tap);
    }
    if (tap.Item.Image != ItemImage::Number) {
        return 1;
    }
    switch (ChooseNumberEditor(tap.PageBase, tap.Item.Parameter)) {
        case IDD_NUMBER_EDITOR:
            return EditNumber(tap);
        case IDD_PAIR_EDITOR:
            return EditPair(tap);
        default:
            return 1;
    }
}
