#include "simulator/wire.h"

namespace readers {

void Wire::Answer(Bytes message) {
    if (Faults().Take("no-reply")) {
        Report("reply-withheld", HexText(message));
        return;
    }
    if (const auto values = Faults().Take("reply")) {
        if (const auto other = BytesFromHex(values->front())) {
            message = *other;
        }
    }
    Send(std::move(message));
}

void Timer::Start(Milliseconds delay, std::function<void()> action) {
    Stop();
    Id = Owner.After(delay, [this, action = std::move(action)] {
        Id = 0;
        action();
    });
}

void Timer::Stop() {
    if (Id != 0) {
        Owner.Cancel(Id);
        Id = 0;
    }
}

}  // namespace readers
