// The trigger keys and the reader link's timers, as they reach the main window. Main thread.
#pragma once

#include "platform/window.h"

// Acts on a trigger message; false when the message is none.
bool HandleTriggerMessage(UINT message);

// Acts on the expiry of a timer of the main window, which has been killed already. Unknown ids are ignored.
void HandleTimer(UINT_PTR id);
