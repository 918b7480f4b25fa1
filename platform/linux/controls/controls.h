// The classes of the common controls. Main thread.
#pragma once

#include "platform/linux/windows/window_object.h"

namespace layer {

WindowPtr MakeTreeControl(const WindowInit& init);
WindowPtr MakeUpDownControl(const WindowInit& init);
WindowPtr MakeProgressControl(const WindowInit& init);
// The tabs of a sheet.
WindowPtr MakeTabControl(const WindowInit& init);

}  // namespace layer
