// The settings sheet under test: the real windows on Qt's offscreen screen, a record laid out for a reader,
// and hands that click and type.
#pragma once

#include <gtest/gtest.h>

#include <QTreeView>
#include <functional>
#include <string>
#include <vector>

#include "settings/catalogue.h"
#include "tests/support/temporary_terminal.h"
#include "ui/tree_view.h"

enum class Spot { Button, Image, Label };

// What reached the program outside the sheet.
struct Outside {
    std::vector<UINT> MainMessages;    // the main window's WM_CLOSE, WM_APPLYSETTINGS and WM_OPENSETTINGS
    std::function<void(UINT)> OnMain;  // what the main window does with them
    std::vector<int> Sounds;           // previews
    int Upgrades = 0;                  // calls of UpgradeFirmware
};

class SheetTest : public testing::Test {
  protected:
    SheetTest();
    ~SheetTest() override;

    // The record with the factory defaults of these readers.
    static void Fit(WORD deviceFlags);
    // In place of a sheet that is open.
    static void Open();
    static void Open(WORD deviceFlags) {
        Fit(deviceFlags);
        Open();
    }
    // Shows the page of a tab and gives its tree.
    static HWND ShowPage(const char* title);

    TemporaryTerminal terminal_;
};

extern Outside World;

// As the main window does it.
void DestroySheet();

// An item of a page by its number; a choice by its list and its parameter. Null when there is none.
HTREEITEM FindItem(HWND tree, DWORD itemId);
HTREEITEM FindChoice(HWND tree, DWORD listId, DWORD parameter);
// As in trees.txt: what its image shows, its number and its text.
std::string LineOf(HWND tree, HTREEITEM item);
// The item's children.
std::vector<std::string> ChildrenOf(HWND tree, HTREEITEM item);
// Everything in the tree, indented; choices behind their list.
std::string Dump(HWND tree);

// Where that part of the item is in the view.
QPoint PlaceOf(HWND tree, HTREEITEM item, Spot spot);
// Unfolds what hides the item and clicks on it.
void Tap(HWND tree, HTREEITEM item, Spot spot);
// The same, and does the work once the editor is open. The editor must be closed by it.
void TapAndEdit(HWND tree, HTREEITEM item, const std::function<void(HWND)>& work);
// Does the work as soon as an editor is open; until then `start` runs.
void WithEditor(const std::function<void()>& start, const std::function<void(HWND)>& work);
QTreeView* ViewOf(HWND tree);
// The item in the model that the view shows.
QModelIndex IndexOf(HWND tree, HTREEITEM item);
QWidget* WidgetOf(HWND window);

// Types into the widget that has the focus: characters, and in brackets names of keys as Qt has them,
// [Backspace].
void Type(const std::string& keys);
void PressButton(HWND dialog, int id);
std::string TextOf(HWND dialog, int control);
std::string CaptionOf(HWND window);
