// The firmware upgrade of the 1D reader's decoder, with all its windows. Main thread.
#pragma once

#include <span>

#include "platform/window.h"
#include "shell/error_messages.h"

// Leads through the whole upgrade and returns when it is over; the owner (the settings sheet) owns every
// window shown, those of a failure too. The
// settings sheet stays while ShellState.UpgradeActive is set, and may be gone afterwards when the program has
// ended.
void UpgradeFirmware(HWND owner);

// The upgrade without its questions and its last word, on a port whose reads return at once: checks the file,
// has the decoder erase its flash, sends the file and waits for the restart. Success, or the error code.
[[nodiscard]] ErrorCode LoadFirmware(HWND owner, LPCWSTR path);

// The two questions: the warning and the choice of the file.

inline constexpr std::size_t FirmwarePathSize = 260;  // characters with the zero

// Dialog procedure of the warning, which names the decoder's present version: asks the decoder for it, so the
// barcode port's reads must return at once. Ends with IDOK ("Next") or IDCANCEL.
INT_PTR CALLBACK CautionDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// Lets the user choose a file: its folder (without the backslash at its end) and its name. 1, or 0 when the
// user cancelled. Both hold FirmwarePathSize characters.
[[nodiscard]] int SelectFirmwareFile(HWND owner, std::span<WCHAR, FirmwarePathSize> folder,
                                     std::span<WCHAR, FirmwarePathSize> name);
