// The tree of a settings page. Main thread.
#pragma once

#include <span>

#include "ui/tree_view.h"

// Sizes the tree to its page and fills it.
void LayoutPageTree(DWORD pageBase, HWND page);

// Sizes the tree to a page that is now that large, in pixels.
void FitTree(HWND tree, HWND page, int width, int height);

// Gives the tree its state images and inserts what the page lists. 1, or 0 when an item could not be
// inserted.
int FillPageTree(DWORD pageBase, HWND tree);

// Inserts items with their groups' options under them, at most `count`; an item 0 ends the list. 1, or 0 when
// one could not be inserted.
int InsertPageItems(DWORD pageBase, HWND tree, std::span<const WORD> items, DWORD count);

// Inserts an item with its choices under `parent` (nullptr: the root) behind `after` (nullptr: the last).
HTREEITEM InsertTreeItem(DWORD pageBase, HWND tree, HTREEITEM parent, DWORD itemId, int hasChildren,
                         HTREEITEM after);

// Shows the item's present label and value. 1, or 0 on failure.
int RefreshTreeItem(DWORD pageBase, HWND tree, HTREEITEM treeItem, DWORD itemId);

// Among the tree item and all its siblings the one of the item; nullptr when there is none.
HTREEITEM FindSiblingById(DWORD pageBase, DWORD itemId, HWND tree, HTREEITEM treeItem);

// The tree control of a page.
int TreeIdOf(DWORD pageBase);
