// The few things that the settings pages do with a tree view. Items are named by their handles; functions
// that give one give nullptr where there is none. Main thread.
#pragma once

#include "platform/controls.h"

// What a tree item shows in front of its text; the numbers are those of the state images.
enum class ItemImage : UINT {
    None,
    SwitchOff,
    SwitchOn,
    Choice,
    ChosenChoice,
    Text,
    Number,
    List,  // a list of choices, or a heading
};

struct TreeItem {
    ItemImage Image = ItemImage::None;
    DWORD Parameter = 0;  // item number; of a choice its position; of a choice of a bit set its string
};

// Inserts an item under `parent` (TVI_ROOT for the root) behind `after` (TVI_LAST for the end). The text is
// copied. With `hasChildren` it can be unfolded.
HTREEITEM InsertItem(HWND tree, HTREEITEM parent, HTREEITEM after, LPCWSTR text, const TreeItem& item,
                     bool hasChildren);
bool ReadTreeItem(HWND tree, HTREEITEM item, TreeItem& read);
bool SetItemImage(HWND tree, HTREEITEM item, ItemImage image);
int SetTreeItemText(HWND tree, HTREEITEM item, LPCWSTR text);
bool DeleteItem(HWND tree, HTREEITEM item);
bool SelectItem(HWND tree, HTREEITEM item);

HTREEITEM ParentOf(HWND tree, HTREEITEM item);
HTREEITEM FirstChildOf(HWND tree, HTREEITEM item);
HTREEITEM NextAfter(HWND tree, HTREEITEM item);
HTREEITEM PreviousBefore(HWND tree, HTREEITEM item);
// The first of `item` and the siblings behind it that has the parameter.
HTREEITEM FindByParameter(HWND tree, HTREEITEM item, DWORD parameter);

// The small pictures in front of the items. Image k of the list stands for ItemImage k; image 0 is never
// drawn. Null when they are not all there.
HIMAGELIST LoadStateImages(HINSTANCE instance);
