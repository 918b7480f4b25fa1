// What EventModify works on.
#pragma once

namespace layer {

class Event {
  public:
    virtual ~Event() = default;
    virtual void Set() = 0;
    virtual void Reset() = 0;
};

}  // namespace layer
