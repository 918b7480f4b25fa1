#include "platform/linux/serial/line_marks.h"

namespace layer {

LineMarks::Result LineMarks::Take(BYTE byte) {
    switch (state_) {
        case State::Plain:
            if (byte == 0xFF) {
                state_ = State::Mark;
                return {{}, 0, false};
            }
            return {{byte}, 1, false};
        case State::Mark:
            if (byte == 0) {
                state_ = State::MarkZero;
                return {{}, 0, false};
            }
            state_ = State::Plain;
            if (byte == 0xFF) {
                return {{0xFF}, 1, false};
            }
            // No line discipline sends this; losing a byte would be worse than passing both on.
            return {{0xFF, byte}, 2, false};
        case State::MarkZero:
            state_ = State::Plain;
            if (byte == 0) {
                return {{}, 0, true};
            }
            return {{byte}, 1, false};
    }
    return {{}, 0, false};
}

}  // namespace layer
