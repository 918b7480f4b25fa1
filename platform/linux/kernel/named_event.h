// Events that programs of one terminal share: a POSIX named semaphore that holds 0 or 1.
#pragma once

#include <memory>

#include "platform/linux/kernel/object.h"

namespace layer {

// Creates or opens the event; null for a name that cannot be used, or when the host refuses. The initial
// state counts only for an event that does not exist yet. Two programs that set it at the very same instant
// may be seen as two settings.
std::shared_ptr<Object> OpenNamedEvent(LPCWSTR name, bool set);

}  // namespace layer
