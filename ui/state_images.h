// The small pictures in front of the items of the settings trees. Main thread.
#pragma once

#include "platform/controls.h"

// Image k of the list stands for ItemImage k; image 0 is never drawn. Null when they are not all there.
HIMAGELIST LoadStateImages(HINSTANCE instance);
