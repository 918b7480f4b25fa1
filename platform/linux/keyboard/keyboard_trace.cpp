// Key events into a file, a line each: `<tick> <virtual key in hex> down|up`.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/log.h"
#include "platform/linux/keyboard/keyboard_backend.h"

namespace layer {
namespace {

class TraceKeyboard : public KeyboardBackend {
  public:
    explicit TraceKeyboard(int fd) : fd_(fd) { unwritten_.reserve(MostUnwritten); }
    ~TraceKeyboard() override { close(fd_); }

    void Key(BYTE key, bool up) override {
        char line[48];
        const int length = std::snprintf(line, sizeof line, "%u %02X %s\n",
                                         static_cast<DWORD>(CurrentClock().Now()), key, up ? "up" : "down");
        down_.set(key, !up);
        if (unwritten_.size() + sizeof line <= unwritten_.capacity()) {
            unwritten_.append(line, static_cast<std::size_t>(length));
        }
        // One write a line: readers of the file see whole lines, and other programs may append too.
        const ssize_t written = write(fd_, unwritten_.data(), unwritten_.size());
        unwritten_.erase(0, static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
        if (!std::exchange(full_, written < 0) && full_) {
            Say(LogPriority::Warning, "key events have to wait: %s", std::strerror(errno));
        }
    }

    void ReleaseAll() override {
        for (unsigned key = 0; key < down_.size(); ++key) {
            if (down_.test(key)) {
                Key(static_cast<BYTE>(key), true);
            }
        }
    }

  private:
    const int fd_;
    // A full disk must not stop the readers, and what is typed must not lack a key in its midst: the events
    // wait for the next one. They are lost only from so many bytes on.
    static constexpr std::size_t MostUnwritten = 65536;
    std::string unwritten_;
    bool full_ = false;
    std::bitset<256> down_;
};

}  // namespace

std::unique_ptr<KeyboardBackend> MakeTraceKeyboard(const std::string& file) {
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    return fd >= 0 ? std::make_unique<TraceKeyboard>(fd) : nullptr;
}

}  // namespace layer
