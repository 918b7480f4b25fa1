#include "ui/page_tree.h"

#include <algorithm>

#include "resources/resource.h"
#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/item_display.h"
#include "ui/item_value.h"

namespace {

constexpr UINT KeepPlace = SWP_NOMOVE | SWP_NOZORDER;

// A window's place in the client area of a page.
RECT PlaceIn(HWND page, HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    POINT corners[2] = {{place.left, place.top}, {place.right, place.bottom}};
    MapWindowPoints(nullptr, page, corners, 2);
    return {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}

void Resize(HWND window, int width, int height) {
    SetWindowPos(window, nullptr, 0, 0, std::max(width, 0), std::max(height, 0), KeepPlace);
}

int InsertChildren(DWORD pageBase, HWND tree, HTREEITEM parent, DWORD groupId,
                   std::span<const WORD> children) {
    for (const WORD child : children) {
        const DWORD itemId = pageBase == Page1D ? groupId + child : child;
        if (!IsLengthItemVisible(pageBase, itemId)) {
            continue;
        }
        if (!InsertTreeItem(pageBase, tree, parent, itemId, 0, nullptr)) {
            return 0;
        }
    }
    return 1;
}

}  // namespace

int TreeIdOf(DWORD pageBase) {
    switch (pageBase) {
        case Page1D:
        case PageLaser:
            return IDC_TREE_1D;
        case PageImager:
            return IDC_TREE_2D;
        default:
            return IDC_TREE_GENERAL;
    }
}

void LayoutPageTree(DWORD pageBase, HWND page) {
    HWND tree = GetDlgItem(page, TreeIdOf(pageBase));
    const RECT inside = PlaceIn(page, page);
    const RECT place = PlaceIn(page, tree);
    Resize(tree, inside.right - 2 * place.left, inside.bottom - place.top);
    FillPageTree(pageBase, tree);
}

void FitTree(HWND tree, HWND page, int width, int height) {
    const RECT place = PlaceIn(page, tree);
    Resize(tree, width - 2 * place.left, height - place.top);
}

int FillPageTree(DWORD pageBase, HWND tree) {
    SendMessageW(tree, TVM_SETIMAGELIST, TVSIL_STATE, reinterpret_cast<LPARAM>(ShellState.StateImages));
    const std::span<const WORD> items = PageList(pageBase);
    return InsertPageItems(pageBase, tree, items, static_cast<DWORD>(items.size()));
}

int InsertPageItems(DWORD pageBase, HWND tree, std::span<const WORD> items, DWORD count) {
    for (const WORD itemId : items.first(std::min<std::size_t>(count, items.size()))) {
        if (itemId == 0) {
            break;
        }
        const std::span<const WORD> children = GroupItems(pageBase, itemId);
        HTREEITEM inserted =
            InsertTreeItem(pageBase, tree, nullptr, itemId, children.empty() ? 0 : 1, nullptr);
        if (!inserted || !InsertChildren(pageBase, tree, inserted, itemId, children)) {
            return 0;
        }
    }
    return 1;
}

HTREEITEM InsertTreeItem(DWORD pageBase, HWND tree, HTREEITEM parent, DWORD itemId, int hasChildren,
                         HTREEITEM after) {
    const ItemDisplay display = GetItemDisplay(pageBase, itemId);
    const TreeItem item = {display.Image, itemId};
    HTREEITEM inserted = InsertItem(tree, parent ? parent : TVI_ROOT, after ? after : TVI_LAST, display.Text,
                                    item, hasChildren != 0 || display.ChoiceCount != 0);
    if (inserted && display.ChoiceCount != 0 &&
        !InsertChoiceItems(pageBase, tree, inserted, itemId, display.ChoiceCount)) {
        return nullptr;
    }
    return inserted;
}

int RefreshTreeItem(DWORD pageBase, HWND tree, HTREEITEM treeItem, DWORD itemId) {
    return SetTreeItemText(tree, treeItem, GetItemDisplay(pageBase, itemId).Text);
}

// Numbers are unique within a page, so that the page says nothing more about them.
HTREEITEM FindSiblingById(DWORD, DWORD itemId, HWND tree, HTREEITEM treeItem) {
    return FindByParameter(tree, FirstChildOf(tree, ParentOf(tree, treeItem)), itemId);
}
