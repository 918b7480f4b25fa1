// The dialogs of the settings sheet's pages. Main thread.
#pragma once

#include "platform/window.h"

// Symbologies of the 1D reader or the long-range laser.
INT_PTR CALLBACK Page1DProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
// Symbologies of the 2D imager.
INT_PTR CALLBACK Page2DProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
// Everything else; this page applies the sheet.
INT_PTR CALLBACK GeneralPageProc(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
