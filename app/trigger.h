// The trigger keys, as they reach the main window. Main thread.
#pragma once

#include "platform/window.h"

// Acts on a trigger message; false when the message is none. `time` is when the key was moved, in
// milliseconds of any clock, or 0: messages that have overtaken each other are put right by it.
bool HandleTriggerMessage(UINT message, DWORD time);
