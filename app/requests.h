// What other programs ask of the main window: its status, and changes of settings. Main thread.
#pragma once

#include "platform/window.h"

// Answers such a message; false when it is none.
bool HandleRequest(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& answer);
