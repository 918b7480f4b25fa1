// The main window's procedure: the program's switchboard. Every handler runs on the main thread; other
// threads reach it by sent messages only.
#pragma once

#include "platform/window.h"
#include "shell/error_messages.h"

// Posted at a start with an open sheet: no decoder answers, perhaps it lacks its firmware.
inline constexpr UINT WM_OFFERUPGRADE = WM_USER + 10;

// Window procedure of class "Vantrel": 0 for what it handles, the default procedure's result for all else.
LRESULT CALLBACK MainWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Shows the error of the code and then closes the program: WM_SHOWERROR, sent to the main window. Any thread.
void ReportError(ErrorCode code);
