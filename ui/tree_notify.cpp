#include "ui/tree_notify.h"

#include "firmware/decoder.h"
#include "firmware/upgrade.h"
#include "shell/shell_state.h"
#include "ui/item_taps.h"
#include "ui/tree_view.h"

namespace {

constexpr WORD KeyUpgradeFirst = 0x71;   // F2
constexpr WORD KeyUpgradeSecond = 0x76;  // F7
constexpr UINT UpgradeKeyTime = 3000;    // milliseconds between the two

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

}  // namespace

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
