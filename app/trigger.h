// The trigger keys, as they reach the main window. Main thread.
#pragma once

#include "platform/window.h"

// Acts on a trigger message; false when the message is none.
bool HandleTriggerMessage(UINT message);
