// The settings property sheet. Main thread.
#pragma once

#include "platform/window.h"

// Switches both readers off, takes the snapshots (unless those of a sheet whose edits have not been applied
// are still wanted), creates the modeless sheet and keeps it as ShellState.SettingsSheet. Nonzero when it
// exists.
[[nodiscard]] int ShowSettingsSheet(HWND owner);
