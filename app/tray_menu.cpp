#include "app/main_window.h"

#include "resources/resource.h"
#include "settings/field.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

void MarkItem(HMENU menu, UINT id, bool enabled, bool on) {
    EnableMenuItem(menu, id, MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
    CheckMenuItem(menu, id, MF_BYCOMMAND | (enabled && on ? MF_CHECKED : MF_UNCHECKED));
}

// Where the menu's bottom right corner goes: above the icon, or at the main window where the icon's place is
// unknown.
POINT MenuCorner(HWND window) {
    NOTIFYICONIDENTIFIER icon = {};
    icon.cbSize = sizeof icon;
    icon.hWnd = ShellState.TrayIconData.hWnd;
    icon.uID = ShellState.TrayIconData.uID;
    RECT place = {};
    if (Shell_NotifyIconGetRect(&icon, &place) == S_OK) {
        return {place.right, place.top};
    }
    GetWindowRect(window, &place);
    return {place.right, place.bottom + 26};
}

}  // namespace

bool BarcodeItemEnabled() {
    return !ShellState.SettingsSheet && HasBarcodeReader() && (DigitOf(general::ActiveDevice) & 1) != 0;
}

bool RfidItemEnabled() {
    return !ShellState.SettingsSheet && HasRfidReader() &&
           (!HasBarcodeReader() || (DigitOf(general::ActiveDevice) & 2) != 0);
}

void ShowTrayMenu(HWND window) {
    DestroyTrayMenu();
    ShellState.TrayMenuBar = LoadMenuW(ShellState.Instance, MAKEINTRESOURCEW(IDM_TRAY));
    ShellState.TrayMenu = GetSubMenu(ShellState.TrayMenuBar, 0);
    MarkItem(ShellState.TrayMenu, IDM_BC_READER, BarcodeItemEnabled(), ShellState.BarcodeEnabled);
    MarkItem(ShellState.TrayMenu, IDM_RFID_READER, RfidItemEnabled(), ShellState.RfidEnabled);

    const POINT corner = MenuCorner(window);
    // Keys reach the menu, and a tap beside it closes it, while the program is in front; an open sheet stays
    // on top.
    HWND sheet = ShellState.SettingsSheet;
    SetForegroundWindow(sheet ? sheet : window);
    TrackPopupMenuEx(ShellState.TrayMenu, TPM_RIGHTALIGN | TPM_BOTTOMALIGN, corner.x, corner.y, window,
                     nullptr);
}

void DestroyTrayMenu() {
    if (ShellState.TrayMenuBar) {
        DestroyMenu(ShellState.TrayMenuBar);  // and its popups with it
    }
    ShellState.TrayMenuBar = nullptr;
    ShellState.TrayMenu = nullptr;
}
