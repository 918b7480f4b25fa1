// Key events as a keyboard of the kernel's: for consoles, and for desktops that let no program type.
//
// What sits above reads its keys by the layout that it uses for every keyboard, so that layout has to be
// known here. Caps Lock is seen by its light, which every keyboard is told of.
#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "platform/linux/kernel/log.h"
#include "platform/linux/keyboard/stroke_keyboard.h"

namespace layer {
namespace {

// The kernel keeps 64 events for a program that reads a keyboard, and a character takes up to 12.
constexpr StrokeRate Rate{2, std::chrono::milliseconds(4)};
// A new keyboard is found and opened by those who read keyboards in their own time.
constexpr std::chrono::milliseconds IntroductionTime{500};

class UinputKeyboard : public StrokeKeyboard {
  public:
    // Takes both over. `device` may be null: then the events go into `fd` as they are.
    UinputKeyboard(LayoutKeys keys, int fd, libevdev_uinput* device)
        : StrokeKeyboard(std::move(keys), Rate), fd_(fd), device_(device) {
        if (device != nullptr) {
            introduced_ += IntroductionTime;
        }
    }
    ~UinputKeyboard() override {
        libevdev_uinput_destroy(device_);
        close(fd_);
    }

  private:
    bool Ready() override;
    bool CapsLock() override;
    void Press(const LayoutKey& key) override;

    const int fd_;
    libevdev_uinput* const device_;
    std::chrono::steady_clock::time_point introduced_ = std::chrono::steady_clock::now();
    bool capsLock_ = false;
};

bool UinputKeyboard::Ready() {
    std::this_thread::sleep_until(introduced_);
    return true;
}

bool UinputKeyboard::CapsLock() {
    input_event event;
    while (read(fd_, &event, sizeof event) == sizeof event) {
        if (event.type == EV_LED && event.code == LED_CAPSL) {
            capsLock_ = event.value != 0;
        }
    }
    return capsLock_;
}

// All in one write: nothing of a character is left down, even when the program is killed.
void UinputKeyboard::Press(const LayoutKey& key) {
    input_event events[12];
    std::memset(events, 0, sizeof events);
    int count = 0;
    const auto add = [&](unsigned code, bool down) {
        events[count].type = EV_KEY;
        events[count].code = static_cast<__u16>(code);
        events[count++].value = down;
        events[count++].type = EV_SYN;
    };
    if (key.Shift) {
        add(KEY_LEFTSHIFT, true);
    }
    if (key.ThirdLevel) {
        add(KEY_RIGHTALT, true);
    }
    add(key.Code, true);
    add(key.Code, false);
    if (key.ThirdLevel) {
        add(KEY_RIGHTALT, false);
    }
    if (key.Shift) {
        add(KEY_LEFTSHIFT, false);
    }
    const std::size_t size = sizeof events[0] * static_cast<std::size_t>(count);
    while (write(fd_, events, size) < 0 && errno == EINTR) {
    }
}

// The keyboard made in the kernel; null with errno set.
libevdev_uinput* MakeDevice(int fd) {
    libevdev* device = libevdev_new();
    if (device == nullptr) {
        return nullptr;
    }
    libevdev_set_name(device, "Vantrel keyboard");
    libevdev_set_id_bustype(device, BUS_VIRTUAL);
    for (unsigned key = KEY_ESC; key <= KEY_F24; ++key) {
        // Whoever reads keyboards must not take it for one with buttons of the machine.
        if ((key <= KEY_COMPOSE && key != KEY_POWER) || key >= KEY_F13) {
            libevdev_enable_event_code(device, EV_KEY, key, nullptr);
        }
    }
    for (const unsigned light : {LED_NUML, LED_CAPSL, LED_SCROLLL}) {
        libevdev_enable_event_code(device, EV_LED, light, nullptr);
    }
    libevdev_uinput* made = nullptr;
    const int result = libevdev_uinput_create_from_device(device, fd, &made);
    libevdev_free(device);
    errno = -result;
    return result == 0 ? made : nullptr;
}

}  // namespace

std::unique_ptr<KeyboardBackend> MakeUinputKeyboard(int fd, const std::string& layout) {
    auto keys = LayoutKeys::Load(layout);
    return keys ? std::make_unique<UinputKeyboard>(std::move(*keys), fd, nullptr) : nullptr;
}

std::unique_ptr<KeyboardBackend> MakeUinputKeyboard(const std::string& layout, std::string& whyNot) {
    auto keys = LayoutKeys::Load(layout);
    if (!keys) {
        whyNot = "there is no keyboard layout '" + layout + "'";
        return nullptr;
    }
    const int fd = open("/dev/uinput", O_RDWR | O_NONBLOCK | O_CLOEXEC);
    libevdev_uinput* device = fd >= 0 ? MakeDevice(fd) : nullptr;
    if (device == nullptr) {
        whyNot = std::string("/dev/uinput: ") + std::strerror(errno);
        if (fd >= 0) {
            close(fd);
        }
        return nullptr;
    }
    if (const std::string missing = keys->Missing(); !missing.empty()) {
        Say(LogPriority::Warning, "the keyboard layout lacks %s: not typed", missing.c_str());
    }
    return std::make_unique<UinputKeyboard>(std::move(*keys), fd, device);
}

}  // namespace layer
