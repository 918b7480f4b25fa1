#include "ui/settings_sheet.h"

#include "platform/controls.h"
#include "resources/resource.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "ui/settings_pages.h"

namespace {

constexpr UINT MaxPages = 3;
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

    PROPSHEETPAGEW pages[MaxPages] = {};
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
