// The About box. Main thread.
#pragma once

#include "platform/window.h"

// Shows the About box modally, or brings the open one to the front.
void ShowAboutBox();
// Ends an open About box as if it had been cancelled.
void CloseAboutBox();

INT_PTR CALLBACK AboutDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
