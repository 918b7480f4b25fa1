// The classes of controls. Main thread.
#pragma once

#include "platform/linux/windows/window_object.h"

namespace layer {

// Makes and adopts a control of the class that `init` names, in whatever letter case, with its place, text
// and style; null for an unknown class.
WindowPtr MakeControl(const WindowInit& init);

WindowPtr MakeStaticControl(const WindowInit& init);
WindowPtr MakeButtonControl(const WindowInit& init);
WindowPtr MakeEditControl(const WindowInit& init);
WindowPtr MakeTreeControl(const WindowInit& init);
WindowPtr MakeUpDownControl(const WindowInit& init);
WindowPtr MakeProgressControl(const WindowInit& init);

}  // namespace layer
