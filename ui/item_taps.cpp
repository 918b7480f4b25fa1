#include "ui/item_taps.h"

#include "settings/catalogue.h"
#include "ui/item_display.h"
#include "ui/length_items.h"
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
