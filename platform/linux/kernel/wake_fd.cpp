#include "platform/linux/kernel/wake_fd.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace layer {
namespace {

struct Holder {
    int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    ~Holder() {
        if (fd >= 0) {
            close(fd);
        }
    }
};

}  // namespace

int ThreadWakeFd() {
    thread_local Holder holder;
    return holder.fd;
}

void WakeFd(int fd) {
    const std::uint64_t one = 1;
    if (fd >= 0 && write(fd, &one, sizeof one) < 0) {
        return;  // the counter is full: it is readable already
    }
}

void ClearWakeFd(int fd) {
    std::uint64_t count = 0;
    if (fd >= 0 && read(fd, &count, sizeof count) < 0) {
        return;  // nothing was there
    }
}

}  // namespace layer
