#include "platform/linux/window_object.h"

namespace layer {

void RegisterCommonControls() {}

}  // namespace layer
