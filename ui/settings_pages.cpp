#include "ui/settings_pages.h"

#include <utility>

#include "settings/catalogue.h"
#include "shell/shell_state.h"
#include "ui/page_tree.h"
#include "ui/tree_notify.h"

namespace {

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

}  // namespace

INT_PTR CALLBACK Page1DProc(HWND page, UINT message, WPARAM, LPARAM lParam) {
    return PageProc(DeviceFlags & Device1D ? Page1D : PageLaser, page, message, lParam);
}

INT_PTR CALLBACK Page2DProc(HWND page, UINT message, WPARAM, LPARAM lParam) {
    return PageProc(PageImager, page, message, lParam);
}

INT_PTR CALLBACK GeneralPageProc(HWND page, UINT message, WPARAM, LPARAM lParam) {
    return PageProc(PageGeneral, page, message, lParam);
}
