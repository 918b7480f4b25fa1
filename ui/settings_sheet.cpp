// The settings sheet and its pages: what OK, Cancel, taps and keys lead to.
#include "ui/settings_sheet.h"

#include <utility>

#include "firmware/decoder.h"
#include "firmware/upgrade.h"
#include "platform/controls.h"
#include "platform/keyboard.h"
#include "resources/resource.h"
#include "settings/catalogue.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "ui/item_taps.h"
#include "ui/page_tree.h"
#include "ui/tree_view.h"

namespace {

constexpr WORD KeyUpgradeFirst = VK_F2;
constexpr WORD KeyUpgradeSecond = VK_F7;
constexpr UINT UpgradeKeyTime = 3000;  // milliseconds between the two

bool UpgradePossible() {
    HWND sheet = ShellState.SettingsSheet;
    return sheet && IsWindowVisible(sheet) && FirmwareUpgradable();
}

// The two keys of the hidden sequence, one after the other with nothing between them.
int OnKey(WORD key) {
    KillTimer(ShellState.MainWindow, IDT_UPGRADE_KEY);
    if (key == KeyUpgradeFirst && UpgradePossible()) {
        SetTimer(ShellState.MainWindow, IDT_UPGRADE_KEY, UpgradeKeyTime, nullptr);
        ShellState.UpgradeKeyArmed = 1;
        return 1;
    }
    const bool upgrade = key == KeyUpgradeSecond && ShellState.UpgradeKeyArmed && UpgradePossible();
    ShellState.UpgradeKeyArmed = 0;
    if (upgrade) {
        UpgradeFirmware(ShellState.SettingsSheet);
    }
    return 1;
}

POINT MessagePosition() {
    const DWORD position = GetMessagePos();
    // Screens to the left of the first one have negative coordinates.
    return {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
}

int OnTap(DWORD pageBase, HWND page, HWND tree) {
    TVHITTESTINFO hit = {};
    hit.pt = MessagePosition();
    ScreenToClient(tree, &hit.pt);
    SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    TreeItem item;
    if (!hit.hItem || !ReadTreeItem(tree, hit.hItem, item) || item.Image == ItemImage::None) {
        return 0;
    }
    const Tap tap = {pageBase, page, tree, hit.hItem, item, (hit.flags & TVHT_ONITEMSTATEICON) != 0};
    return TapItem(tap);
}

// Nonzero when the notification of the page's tree has been dealt with.
int OnTreeNotify(DWORD pageBase, HWND page, const NMHDR* notification) {
    switch (notification->code) {
        case TVN_KEYDOWN:
            return OnKey(reinterpret_cast<const NMTVKEYDOWN*>(notification)->wVKey);
        case NM_CLICK:
            return OnTap(pageBase, page, notification->hwndFrom);
        default:
            return 1;
    }
}

// What closes the sheet is posted, once: the sheet must outlive the notification that it has sent.
void PostOnce(UINT message) {
    if (!std::exchange(ShellState.SheetClosing, 1u)) {
        PostMessageW(ShellState.MainWindow, message, 0, 0);
    }
}

INT_PTR OnNotify(DWORD pageBase, HWND page, const NMHDR* notification) {
    if (notification->code == PSN_QUERYCANCEL) {
        // Without settings to work by there is nothing to go back to: the program ends.
        PostOnce(WM_CLOSE);
        return 1;
    }
    if (notification->code == PSN_APPLY) {
        // Every page is told; one of them acts.
        if (pageBase == PageGeneral) {
            PostOnce(WM_APPLYSETTINGS);
        }
        return 1;
    }
    if (notification->idFrom == static_cast<UINT_PTR>(TreeIdOf(pageBase))) {
        return OnTreeNotify(pageBase, page, notification) != 0 ? 1 : 0;
    }
    return 1;
}

INT_PTR PageProc(DWORD pageBase, HWND page, UINT message, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            LayoutPageTree(pageBase, page);
            return 1;
        case WM_SIZE:
            FitTree(GetDlgItem(page, TreeIdOf(pageBase)), page, LOWORD(lParam), HIWORD(lParam));
            return 1;
        case WM_NOTIFY:
            return OnNotify(pageBase, page, reinterpret_cast<const NMHDR*>(lParam));
        default:
            return 0;
    }
}

// Symbologies of the 1D reader or the long-range laser.
INT_PTR CALLBACK Page1DProc(HWND page, UINT message, WPARAM, LPARAM lParam) {
    return PageProc(DeviceFlags & Device1D ? Page1D : PageLaser, page, message, lParam);
}

// Symbologies of the 2D imager.
INT_PTR CALLBACK Page2DProc(HWND page, UINT message, WPARAM, LPARAM lParam) {
    return PageProc(PageImager, page, message, lParam);
}

// Everything else; this page applies the sheet.
INT_PTR CALLBACK GeneralPageProc(HWND page, UINT message, WPARAM, LPARAM lParam) {
    return PageProc(PageGeneral, page, message, lParam);
}

constexpr int TabControlId = 0x3020;
constexpr LONG TabsAtBottom = 0x0002;
constexpr int ControlsVersion = 0x20C;

int CALLBACK SheetCallback(HWND sheet, UINT message, LPARAM) {
    switch (message) {
        case PSCB_INITIALIZED: {
            HWND tabs = GetDlgItem(sheet, TabControlId);
            SetWindowLongW(tabs, GWL_STYLE, GetWindowLongW(tabs, GWL_STYLE) | TabsAtBottom);
            return 1;
        }
        case PSCB_GETVERSION:
            return ControlsVersion;
        default:
            return 1;
    }
}

PROPSHEETPAGEW MakePage(int dialog, LPCWSTR title, DLGPROC procedure) {
    PROPSHEETPAGEW page = {};
    page.dwSize = sizeof page;
    page.dwFlags = PSP_USETITLE;
    page.hInstance = ShellState.Instance;
    page.pszTemplate = MAKEINTRESOURCEW(dialog);
    page.pszTitle = title;
    page.pfnDlgProc = procedure;
    return page;
}

// Until something has been applied the reader may hold anything, and everything is sent. A sheet that was
// closed without being applied has left its changes in the record: the reader still holds what the snapshots
// say.
void KeepSnapshots() {
    if (ShellState.SettingsApplied.Exchange(0)) {
        TakeSnapshots();
    }
}

}  // namespace

int ShowSettingsSheet(HWND owner) {
    ShellState.BarcodeEnabled = 0;
    ShellState.RfidEnabled = 0;
    ShellState.SheetClosing = 0;
    KeepSnapshots();

    PROPSHEETPAGEW pages[ReaderTypes] = {};  // at most one for each barcode reader, and the general one
    UINT count = 0;
    if (DeviceFlags & (Device1D | DeviceLaser)) {
        pages[count++] = MakePage(IDD_PAGE_1D, TEXT("1D"), Page1DProc);
    }
    if (DeviceFlags & DeviceImager) {
        pages[count++] = MakePage(IDD_PAGE_2D, TEXT("2D"), Page2DProc);
    }
    pages[count++] = MakePage(IDD_PAGE_GENERAL, TEXT("General"), GeneralPageProc);

    PROPSHEETHEADERW header = {};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_PROPSHEETPAGE | PSH_NOAPPLYNOW | PSH_USECALLBACK | PSH_MODELESS | PSH_MAXIMIZE;
    header.pszCaption = WindowTitle;
    header.hwndParent = owner;
    header.hInstance = ShellState.Instance;
    header.nPages = count;
    header.nStartPage = count - 1;
    header.ppsp = pages;
    header.pfnCallback = SheetCallback;
    HWND sheet = reinterpret_cast<HWND>(PropertySheetW(&header));
    ShellState.SettingsSheet = IsWindow(sheet) ? sheet : nullptr;
    return ShellState.SettingsSheet ? 1 : 0;
}
