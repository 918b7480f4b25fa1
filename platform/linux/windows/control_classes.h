// The classes of controls. Main thread.
#pragma once

#include "platform/linux/windows/window_object.h"

namespace layer {

// Makes and adopts a control of the class that `init` names, in whatever letter case, with its place, text
// and style; null for an unknown class.
WindowPtr MakeControl(const WindowInit& init);

// Those with files of their own.
WindowPtr MakeTreeControl(const WindowInit& init);
WindowPtr MakeUpDownControl(const WindowInit& init);
WindowPtr MakeProgressControl(const WindowInit& init);

}  // namespace layer
