// The main window's timers, nearly all of them the reader link's. Main thread.
#pragma once

#include "shell/error_messages.h"

// Acts on the expiry of a timer of the main window, which has been killed already. Success or a code to
// report. Unknown ids are ignored.
[[nodiscard]] ErrorCode HandleTimer(UINT_PTR id);
