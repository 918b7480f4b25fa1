#include "platform/linux/kernel/posix.h"

#include <sys/eventfd.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <thread>

namespace layer {

void Descriptor::Close() {
    if (number_ >= 0) {
        close(std::exchange(number_, -1));
    }
}

bool LockFile(int file, int kind, std::chrono::milliseconds longest) {
    constexpr std::chrono::milliseconds step{2};
    const auto until = std::chrono::steady_clock::now() + longest;
    while (flock(file, kind | LOCK_NB) != 0) {
        if (errno != EINTR && (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= until)) {
            return false;
        }
        const int reason = errno;
        std::this_thread::sleep_for(step);
        errno = reason;
    }
    return true;
}

Waker::Waker() : bell_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void Waker::Wake() const {
    // A counter that is full is readable already.
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(bell_.Number(), &one, sizeof one);
}

void Waker::Clear() const {
    std::uint64_t count;
    [[maybe_unused]] const auto taken = read(bell_.Number(), &count, sizeof count);
}

}  // namespace layer
