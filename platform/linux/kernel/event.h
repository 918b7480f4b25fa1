// Events: what EventModify works on.
#pragma once

#include "platform/linux/kernel/object.h"

namespace layer {

class Event {
  public:
    virtual ~Event() = default;
    virtual void Set() = 0;
};

// Creates or opens an event that programs of one terminal share; null for a name that cannot be used, or when
// the host refuses. The initial state counts only for an event that does not exist yet. Two programs that set
// it at the very same instant may be seen as two settings.
std::shared_ptr<Object> OpenNamedEvent(LPCWSTR name, bool set);

}  // namespace layer
