#include "platform/linux/kernel/local_object.h"

#include "platform/kernel.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

bool LocalObject::Close() {
    std::scoped_lock lock(mutex_);
    closed_ = true;
    changed_.notify_all();
    return true;
}

DWORD LocalObject::Wait(DWORD milliseconds) {
    Clock& clock = CurrentClock();
    const std::uint64_t deadline = clock.DeadlineAfter(milliseconds);
    std::unique_lock lock(mutex_);
    const bool fulfilled = clock.WaitUntil(lock, changed_, deadline, [this] { return closed_ || Ready(); });
    if (closed_) {
        return WAIT_FAILED;
    }
    if (!fulfilled) {
        return WAIT_TIMEOUT;
    }
    Take();
    return WAIT_OBJECT_0;
}

}  // namespace layer
