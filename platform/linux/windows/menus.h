#pragma once

#include "platform/window.h"

namespace layer {

// Closes the popup menu that is open, if one is: nothing is chosen. Main thread.
void ClosePopup();

}  // namespace layer
