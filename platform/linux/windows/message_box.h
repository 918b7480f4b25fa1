#pragma once

namespace layer {

// Ends the message boxes that other threads wait for; WM_QUIT does. Main thread.
void CloseMessageBoxes();

}  // namespace layer
