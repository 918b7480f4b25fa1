#include "app/about_box.h"

#include "resources/resource.h"
#include "shell/shell_state.h"

void ShowAboutBox() {
    if (HWND open = ShellState.AboutDialog) {
        SetActiveWindow(open);
        return;
    }
    DialogBoxParamW(ShellState.Instance, MAKEINTRESOURCEW(IDD_ABOUT), GetActiveWindow(), AboutDlgProc, 0);
}

void CloseAboutBox() {
    if (HWND open = ShellState.AboutDialog.Exchange(nullptr)) {
        EndDialog(open, IDCANCEL);
    }
}

INT_PTR CALLBACK AboutDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowTextW(dialog, WindowTitle);
            SetDlgItemTextW(dialog, IDC_TEXT, TEXT("Vantrel 1.29\nBarcode and RFID reader utility"));
            ShellState.AboutDialog = dialog;
            SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
            return 1;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) {
                EndDialog(dialog, IDOK);
                ShellState.AboutDialog = nullptr;
            }
            return 1;
        case WM_CLOSE:
            EndDialog(dialog, IDCANCEL);
            ShellState.AboutDialog = nullptr;
            return 1;
        default:
            return 0;
    }
}
