// The platform calls that stand in front of Windows' own, each with Windows' own signature. The platform's
// headers rename the calls of the system to these; the sources in this folder see both.
#pragma once

#include "platform/base.h"
// Behind <windows.h>.
#include <commctrl.h>
#include <commdlg.h>
#include <mmsystem.h>
#include <prsht.h>

// Files of the terminal folder and serial ports.
decltype(CreateFileW) TerminalCreateFileW;
decltype(GetFileAttributesW) TerminalGetFileAttributesW;
decltype(ReadFile) TerminalReadFile;
decltype(WriteFile) TerminalWriteFile;
decltype(CloseHandle) TerminalCloseHandle;
decltype(GetOpenFileNameW) TerminalGetOpenFileNameW;

decltype(SetupComm) TerminalSetupComm;
decltype(GetCommState) TerminalGetCommState;
decltype(SetCommState) TerminalSetCommState;
decltype(GetCommTimeouts) TerminalGetCommTimeouts;
decltype(SetCommTimeouts) TerminalSetCommTimeouts;
decltype(PurgeComm) TerminalPurgeComm;
decltype(SetCommMask) TerminalSetCommMask;
decltype(WaitCommEvent) TerminalWaitCommEvent;
decltype(ClearCommError) TerminalClearCommError;
decltype(SetCommBreak) TerminalSetCommBreak;
decltype(ClearCommBreak) TerminalClearCommBreak;

// Names that only the programs of one terminal share.
decltype(CreateEventW) TerminalCreateEventW;
decltype(CreateMutexW) TerminalCreateMutexW;
decltype(FindWindowW) TerminalFindWindowW;

// Keys by SendInput, sounds of the terminal folder, broadcasts that nobody can hold up.
decltype(keybd_event) Terminal_keybd_event;
decltype(PlaySoundW) TerminalPlaySoundW;
decltype(SendMessageW) TerminalSendMessageW;

// A window that shows itself leaves the focus where it is: who wants it says so (SetForegroundWindow).
decltype(CreateWindowExW) TerminalCreateWindowExW;
decltype(ShowWindow) TerminalShowWindow;

// Property sheets by keys.
decltype(PropertySheetW) TerminalPropertySheetW;
decltype(GetMessagePos) TerminalGetMessagePos;

namespace layer {

// Offers a message to the sheet, as PSM_ISDIALOGMESSAGE does; whether it has taken it.
bool SheetTakes(HWND sheet, MSG* message);

}  // namespace layer
