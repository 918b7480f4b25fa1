#pragma once

namespace layer {

// Whether a window manager runs on the X display; asked anew every time. Main thread, on X11 only.
bool WindowManagerRuns();

}  // namespace layer
