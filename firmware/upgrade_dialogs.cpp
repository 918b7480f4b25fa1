#include "firmware/upgrade.h"

#include <algorithm>
#include <array>

#include "firmware/decoder.h"
#include "platform/base.h"
#include "platform/shell.h"
#include "resources/resource.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

constexpr int VersionTries = 5;
constexpr DWORD VersionTimeout = 500;
constexpr std::size_t VersionSize = 32;
constexpr std::size_t CautionSize = 512;

constexpr LPCWSTR Warning = TEXT(
    "Firmware update may cause damage to the barcode decoder when the terminal is accidentally turned off "
    "before the process is done. Suggest placing the terminal in cradle and connecting power supply cord. If "
    "you are aware of the above risk and wish to proceed, click [Next].");

void ShowCaution(HWND dialog) {
    std::array<BYTE, VersionSize> version{};
    for (int i = 0; i < VersionTries; ++i) {
        if (QueryFirmwareVersion(ShellState.BarcodePort, VersionTimeout, version) == Success) {
            break;
        }
    }
    WCHAR wide[VersionSize + 1] = {};
    std::copy(version.begin(), version.end(), wide);
    WCHAR text[CautionSize];
    wsprintfW(text, TEXT("%s\r\n\r\nCurrent Firmware : %s"), Warning, wide);
    SetDlgItemTextW(dialog, IDC_EDIT, text);
}

}  // namespace

INT_PTR CALLBACK CautionDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            ShowCaution(dialog);
            return 1;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) {
                EndDialog(dialog, LOWORD(wParam));
            }
            return 1;
        default:
            return static_cast<INT_PTR>(DefWindowProcW(dialog, message, wParam, lParam));
    }
}

int SelectFirmwareFile(HWND owner, std::span<WCHAR, FirmwarePathSize> folder,
                       std::span<WCHAR, FirmwarePathSize> name) {
    WCHAR path[FirmwarePathSize] = {};
    OPENFILENAMEW choice = {};
    choice.lStructSize = sizeof choice;
    choice.hwndOwner = owner;
    choice.hInstance = ShellState.Instance;
    choice.lpstrFilter = TEXT("SHX Files (*.SHX)\0*.SHX\0All Files (*.*)\0*.*\0");
    choice.nFilterIndex = 1;
    choice.lpstrFile = path;
    choice.nMaxFile = FirmwarePathSize;
    choice.lpstrInitialDir = TEXT("\\DiskOnChip\\");
    choice.lpstrDefExt = TEXT("SHX");
    choice.Flags = OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
    if (!GetOpenFileNameW(&choice)) {
        return 0;
    }
    path[FirmwarePathSize - 1] = 0;
    int split = lstrlenW(path);
    while (split > 0 && path[split - 1] != '\\') {
        --split;
    }
    lstrcpynW(name.data(), path + split, static_cast<int>(name.size()));
    path[split > 0 ? split - 1 : 0] = 0;
    lstrcpynW(folder.data(), path, static_cast<int>(folder.size()));
    return 1;
}
