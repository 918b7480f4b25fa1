#include "tools/input_device.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

void InputDevice::Complain(const char* what, int error) {
    if (std::exchange(complaint_, error) != error) {
        std::fprintf(stderr, "vantrel-trigger: %s: %s: %s\n", path_.c_str(), what, std::strerror(error));
    }
}

bool InputDevice::Open() {
    if (file_ >= 0) {
        return true;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - lastTry_ < RetryPause) {
        return false;
    }
    lastTry_ = now;
    file_ = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file_ < 0) {
        Complain("waits for it", errno);
        return false;
    }
    complaint_ = 0;
    std::fprintf(stderr, "vantrel-trigger: %s: watched\n", path_.c_str());
    down_.assign(KEY_CNT, false);
    Look(down_);
    GrabWhenFree();
    return true;
}

void InputDevice::Close() {
    if (file_ >= 0) {
        close(file_);
    }
    file_ = -1;
    grabbed_ = skipping_ = false;
}

// What is down now, where the device can be asked.
void InputDevice::Look(std::vector<bool>& down) const {
    unsigned char bits[KEY_CNT / 8] = {};
    if (ioctl(file_, EVIOCGKEY(sizeof bits), bits) < 0) {
        return;
    }
    for (std::size_t code = 0; code < down.size(); ++code) {
        down[code] = (bits[code / 8] >> (code % 8) & 1) != 0;
    }
}

// A key that is down when the device is taken would stay down for everybody else.
void InputDevice::GrabWhenFree() {
    if (!grab_ || grabbed_ || std::find(down_.begin(), down_.end(), true) != down_.end()) {
        return;
    }
    grabbed_ = true;
    if (ioctl(file_, EVIOCGRAB, 1) != 0) {
        Complain("cannot be kept from others", errno);
    }
}

void InputDevice::Set(unsigned code, bool down, const std::function<void(KeyEvent)>& take) {
    if (code < down_.size() && down_[code] != down) {
        down_[code] = down;
        take({code, down});
    }
}

bool InputDevice::Read(const std::function<void(KeyEvent)>& take) {
    input_event events[64];
    ssize_t size = 0;
    while ((size = read(file_, events, sizeof events)) > 0) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(size) / sizeof events[0]; ++at) {
            const input_event& event = events[at];
            if (event.type == EV_SYN && event.code == SYN_DROPPED) {
                skipping_ = true;
            } else if (event.type == EV_SYN && skipping_) {
                // The kernel had no room for what came before.
                skipping_ = false;
                std::vector<bool> now = down_;
                Look(now);
                for (unsigned code = 0; code < now.size(); ++code) {
                    Set(code, now[code], take);
                }
            } else if (event.type == EV_KEY && !skipping_) {
                Set(event.code, event.value != 0, take);
            }
        }
        GrabWhenFree();
    }
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return true;
    }
    Complain("gone", size == 0 ? ENODEV : errno);
    for (unsigned code = 0; code < down_.size(); ++code) {
        Set(code, false, take);
    }
    Close();
    return false;
}
