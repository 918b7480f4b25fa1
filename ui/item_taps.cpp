#include "ui/item_taps.h"

#include <algorithm>
#include <utility>

#include "resources/resource.h"
#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/editors.h"
#include "ui/item_display.h"
#include "ui/item_value.h"
#include "ui/page_tree.h"

namespace {

// Gives a length the label of the new mode, or shows it behind `after` when it was not shown so far.
bool ShowLength(const Tap& tap, HTREEITEM list, DWORD itemId, HTREEITEM after) {
    if (HTREEITEM shown = FindSiblingById(tap.PageBase, itemId, tap.Tree, list)) {
        return RefreshTreeItem(tap.PageBase, tap.Tree, shown, itemId) != 0;
    }
    return InsertTreeItem(tap.PageBase, tap.Tree, ParentOf(tap.Tree, list), itemId, 0, after) != nullptr;
}

bool HideLength(const Tap& tap, HTREEITEM list, DWORD itemId) {
    HTREEITEM shown = FindSiblingById(tap.PageBase, itemId, tap.Tree, list);
    return !shown || DeleteItem(tap.Tree, shown);
}

// Brings the two lengths of a group up to date with its mode, which has just been chosen.
bool FollowLengthMode(const Tap& tap, HTREEITEM list, DWORD modeItem) {
    const LengthPair pair = GetLengthPair(tap.PageBase, modeItem);
    const bool first = IsLengthItemVisible(tap.PageBase, pair.First) != 0;
    const bool second = IsLengthItemVisible(tap.PageBase, pair.Second) != 0;
    if (!second && !HideLength(tap, list, pair.Second)) {
        return false;
    }
    if (!first) {
        return HideLength(tap, list, pair.First);
    }
    if (!ShowLength(tap, list, pair.First, list)) {
        return false;
    }
    HTREEITEM shown = FindSiblingById(tap.PageBase, pair.First, tap.Tree, list);
    return !second || ShowLength(tap, list, pair.Second, shown);
}

// The choices of the bit sets, which are switches, carry their string instead of an item number; it lies
// beyond all item numbers.
const Setting* BitSetOf(const Tap& tap, HTREEITEM list, TreeItem& owner) {
    if (!list || !ReadTreeItem(tap.Tree, list, owner) || !IsBitSet(tap.PageBase, owner.Parameter)) {
        return nullptr;
    }
    return FindSetting(tap.PageBase, owner.Parameter);
}

ItemImage TapBit(const Tap& tap, DWORD listItem) {
    const DWORD bit = tap.Item.Parameter - ItemChoiceBase(tap.PageBase, listItem);
    const WORD mask = static_cast<WORD>(1u << (bit & 0xF));
    const WORD value = static_cast<WORD>(ReadChoice(tap.PageBase, listItem));
    const bool switchOn = tap.Item.Image == ItemImage::SwitchOff;
    const WORD changed = static_cast<WORD>(switchOn ? value | mask : value & ~mask);
    WriteItemWord(tap.PageBase, listItem, static_cast<WORD>('0' + changed));
    return switchOn ? ItemImage::SwitchOn : ItemImage::SwitchOff;
}

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

ItemImage TapChoice(const Tap& tap) {
    HTREEITEM list = ParentOf(tap.Tree, tap.Handle);
    HTREEITEM firstChoice = FirstChildOf(tap.Tree, list);
    TreeItem owner;
    if (!firstChoice || !ReadTreeItem(tap.Tree, list, owner) || owner.Image == ItemImage::None) {
        return ItemImage::None;
    }
    const int chosen = ReadChoice(tap.PageBase, owner.Parameter);
    HTREEITEM before = FindByParameter(tap.Tree, firstChoice, static_cast<DWORD>(chosen));
    if (!before || !SetItemImage(tap.Tree, before, ItemImage::Choice)) {
        return ItemImage::None;
    }
    WriteItemWord(tap.PageBase, owner.Parameter, static_cast<WORD>('0' + tap.Item.Parameter));
    if (IsLengthMode(tap.PageBase, owner.Parameter) && !FollowLengthMode(tap, list, owner.Parameter)) {
        return ItemImage::None;
    }
    return ItemImage::ChosenChoice;
}

ItemImage TapSwitch(const Tap& tap) {
    TreeItem owner;
    if (BitSetOf(tap, ParentOf(tap.Tree, tap.Handle), owner)) {
        return TapBit(tap, owner.Parameter);
    }
    const DWORD itemId = tap.Item.Parameter;
    WriteItemWord(tap.PageBase, itemId, tap.Item.Image == ItemImage::SwitchOn ? '0' : '1');
    const ItemDisplay display = GetItemDisplay(tap.PageBase, itemId);
    return SetTreeItemText(tap.Tree, tap.Handle, display.Text) ? display.Image : ItemImage::None;
}

int TapItem(const Tap& tap) {
    ItemImage image = tap.Item.Image;
    if (image == ItemImage::Choice) {
        image = TapChoice(tap);
    } else if ((image == ItemImage::SwitchOff || image == ItemImage::SwitchOn) && tap.OnImage) {
        image = TapSwitch(tap);
    }
    if (image == ItemImage::None || !SetItemImage(tap.Tree, tap.Handle, image) ||
        !SelectItem(tap.Tree, tap.Handle)) {
        return 0;
    }
    return EditItem(tap);
}

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
