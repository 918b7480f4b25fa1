// The diary from inside the layer, in the host's own characters.
#pragma once

#include <string_view>

#include "platform/log.h"

namespace layer {

// Writes "vantrel: " and the text as one line. Any thread; takes no memory.
void Say(LogPriority priority, std::string_view text);
// The same with a format of printf; at most 1,000 bytes.
__attribute__((format(printf, 2, 3))) void Say(LogPriority priority, const char* format, ...);

}  // namespace layer
