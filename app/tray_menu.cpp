#include "app/tray_menu.h"

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

    RECT place;
    GetWindowRect(window, &place);
    place.bottom += 26;
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&place), 2);
    TrackPopupMenuEx(ShellState.TrayMenu, TPM_RIGHTALIGN | TPM_BOTTOMALIGN, place.right, place.bottom, window,
                     nullptr);
}

void DestroyTrayMenu() {
    if (ShellState.TrayMenuBar) {
        DestroyMenu(ShellState.TrayMenuBar);  // and its popups with it
    }
    ShellState.TrayMenuBar = nullptr;
    ShellState.TrayMenu = nullptr;
}
