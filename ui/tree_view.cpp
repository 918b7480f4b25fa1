#include "ui/tree_view.h"

#include "resources/resource.h"

namespace {

constexpr int NoImage = -1;

UINT StateOf(ItemImage image) {
    return INDEXTOSTATEIMAGEMASK(static_cast<UINT>(image));
}

HTREEITEM Related(HWND tree, HTREEITEM item, UINT relation) {
    if (!item) {
        return nullptr;
    }
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

bool SetItem(HWND tree, TVITEMW& item) {
    return SendMessageW(tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item)) != 0;
}

constexpr int Side = 15;  // pixels
constexpr int Count = static_cast<int>(ItemImage::List) + 1;

}  // namespace

HTREEITEM InsertItem(HWND tree, HTREEITEM parent, HTREEITEM after, LPCWSTR text, const TreeItem& item,
                     bool hasChildren) {
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_STATE | TVIF_PARAM | TVIF_CHILDREN;
    insert.item.pszText = const_cast<LPWSTR>(text);
    insert.item.state = StateOf(item.Image);
    insert.item.stateMask = TVIS_STATEIMAGEMASK;
    insert.item.iImage = NoImage;
    insert.item.iSelectedImage = NoImage;
    insert.item.cChildren = hasChildren ? 1 : 0;
    insert.item.lParam = static_cast<LPARAM>(item.Parameter);
    return reinterpret_cast<HTREEITEM>(
        SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

bool ReadTreeItem(HWND tree, HTREEITEM item, TreeItem& read) {
    if (!item) {
        return false;
    }
    TVITEMW wanted = {};
    wanted.mask = TVIF_HANDLE | TVIF_STATE | TVIF_PARAM;
    wanted.hItem = item;
    wanted.stateMask = TVIS_STATEIMAGEMASK;
    if (!SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&wanted))) {
        return false;
    }
    read.Image = static_cast<ItemImage>((wanted.state & TVIS_STATEIMAGEMASK) >> 12);
    read.Parameter = static_cast<DWORD>(wanted.lParam);
    return true;
}

bool SetItemImage(HWND tree, HTREEITEM item, ItemImage image) {
    TVITEMW change = {};
    change.mask = TVIF_HANDLE | TVIF_STATE;
    change.hItem = item;
    change.state = StateOf(image);
    change.stateMask = TVIS_STATEIMAGEMASK;
    return SetItem(tree, change);
}

int SetTreeItemText(HWND tree, HTREEITEM item, LPCWSTR text) {
    TVITEMW change = {};
    change.mask = TVIF_HANDLE | TVIF_TEXT;
    change.hItem = item;
    change.pszText = const_cast<LPWSTR>(text);
    return SetItem(tree, change) ? 1 : 0;
}

bool DeleteItem(HWND tree, HTREEITEM item) {
    return SendMessageW(tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

bool SelectItem(HWND tree, HTREEITEM item) {
    return SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item)) != 0;
}

HTREEITEM ParentOf(HWND tree, HTREEITEM item) {
    return Related(tree, item, TVGN_PARENT);
}

HTREEITEM FirstChildOf(HWND tree, HTREEITEM item) {
    return Related(tree, item, TVGN_CHILD);
}

HTREEITEM NextAfter(HWND tree, HTREEITEM item) {
    return Related(tree, item, TVGN_NEXT);
}

HTREEITEM PreviousBefore(HWND tree, HTREEITEM item) {
    return Related(tree, item, TVGN_PREVIOUS);
}

HTREEITEM FindByParameter(HWND tree, HTREEITEM item, DWORD parameter) {
    for (; item; item = NextAfter(tree, item)) {
        TreeItem read;
        if (ReadTreeItem(tree, item, read) && read.Parameter == parameter) {
            return item;
        }
    }
    return nullptr;
}

HIMAGELIST LoadStateImages(HINSTANCE instance) {
    HIMAGELIST images = ImageList_Create(Side, Side, ILC_MASK, Count, 0);
    if (!images) {
        return nullptr;
    }
    // The bitmap's first image is that of state 1.
    ImageList_SetImageCount(images, 1);
    HBITMAP bitmap = LoadBitmapW(instance, MAKEINTRESOURCEW(IDB_STATE_IMAGES));
    const int first = ImageList_AddMasked(images, bitmap, RGB(0, 255, 0));
    DeleteObject(bitmap);
    if (first < 0 || ImageList_GetImageCount(images) < Count) {
        ImageList_Destroy(images);
        return nullptr;
    }
    return images;
}
