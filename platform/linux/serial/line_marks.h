// Undoes the marks that a tty with PARMRK puts into the received bytes.
#pragma once

#include "platform/base.h"

namespace layer {

// A break arrives as FF 00 00, a byte FF doubled, a damaged byte b as FF 00 b (it is passed on: the readers'
// framings have checks of their own). The marks may be cut anywhere between two reads.
class LineMarks {
  public:
    struct Result {
        BYTE bytes[2];
        int count;   // bytes received: 0, 1 or 2
        bool broke;  // a break has ended here
    };
    Result Take(BYTE byte);
    void Reset() { state_ = State::Plain; }

  private:
    enum class State { Plain, Mark, MarkZero };
    State state_ = State::Plain;
};

}  // namespace layer
