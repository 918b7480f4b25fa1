// Key events into a file, a line each: `<tick> <virtual key in hex> down|up`.
#include <fcntl.h>
#include <unistd.h>

#include <bitset>
#include <cstdio>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/keyboard/keyboard_backend.h"

namespace layer {
namespace {

class TraceKeyboard : public KeyboardBackend {
  public:
    explicit TraceKeyboard(int fd) : fd_(fd) {}
    ~TraceKeyboard() override { close(fd_); }

    void Key(BYTE key, bool up) override {
        char line[48];
        const int length = std::snprintf(line, sizeof line, "%u %02X %s\n",
                                         static_cast<DWORD>(CurrentClock().Now()), key, up ? "up" : "down");
        // One write a line: readers of the file see whole lines, and other programs may append too.
        if (write(fd_, line, static_cast<std::size_t>(length)) != length) {
            return;  // a full disk must not stop the readers
        }
        down_.set(key, !up);
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
    std::bitset<256> down_;
};

}  // namespace

std::unique_ptr<KeyboardBackend> MakeTraceKeyboard(const std::string& file) {
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    return fd >= 0 ? std::make_unique<TraceKeyboard>(fd) : nullptr;
}

}  // namespace layer
