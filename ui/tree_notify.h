// What keys and taps do in the tree of a settings page. Main thread.
#pragma once

#include "platform/controls.h"

// Handles a notification of the page's tree; nonzero when it has been dealt with.
int OnTreeNotify(DWORD pageBase, HWND page, const NMHDR* notification);
