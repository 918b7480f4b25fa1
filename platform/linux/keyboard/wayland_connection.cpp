#include "platform/linux/keyboard/wayland_connection.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wayland-client.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "virtual-keyboard-unstable-v1.h"

namespace layer {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds LongestWait{2};

void OnGlobal(void* data, wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t) {
    auto& offers = *static_cast<WaylandConnection::Offers*>(data);
    const std::string_view offered = interface;
    if (offered == wl_seat_interface.name && offers.seat == nullptr) {
        offers.seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    } else if (offered == zwp_virtual_keyboard_manager_v1_interface.name && offers.manager == nullptr) {
        offers.manager = static_cast<zwp_virtual_keyboard_manager_v1*>(
            wl_registry_bind(registry, name, &zwp_virtual_keyboard_manager_v1_interface, 1));
    }
}

void OnGlobalRemoved(void*, wl_registry*, std::uint32_t) {}

constexpr wl_registry_listener RegistryListener{OnGlobal, OnGlobalRemoved};

void OnAnswer(void* data, wl_callback* callback, std::uint32_t) {
    *static_cast<bool*>(data) = true;
    wl_callback_destroy(callback);
}

constexpr wl_callback_listener AnswerListener{OnAnswer};

// A file without a name that holds the text and its final zero; -1 when there is no room.
int MakeFile(const std::string& text) {
    const int fd = memfd_create("vantrel-keymap", MFD_CLOEXEC);
    const std::size_t size = text.size() + 1;
    if (fd >= 0 && write(fd, text.c_str(), size) != static_cast<ssize_t>(size)) {
        close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

WaylandConnection::Result WaylandConnection::Open(const std::string& keyMap) {
    Close();
    display_ = wl_display_connect(nullptr);
    if (display_ == nullptr) {
        return Result::NoDisplay;
    }
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &RegistryListener, &offers_);
    if (!RoundTrip()) {
        Close();
        return Result::NoDisplay;
    }
    const int file = offers_.seat != nullptr && offers_.manager != nullptr ? MakeFile(keyMap) : -1;
    if (file >= 0) {
        keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(offers_.manager, offers_.seat);
        zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                       static_cast<std::uint32_t>(keyMap.size() + 1));
        // The answer also says whether we may have a keyboard.
        const bool taken = RoundTrip();
        close(file);
        if (taken) {
            return Result::Connected;
        }
    }
    Close();
    return Result::NoProtocol;
}

void WaylandConnection::Close() {
    if (display_ == nullptr) {
        return;
    }
    if (keyboard_ != nullptr) {
        zwp_virtual_keyboard_v1_destroy(keyboard_);
    }
    if (offers_.manager != nullptr) {
        zwp_virtual_keyboard_manager_v1_destroy(offers_.manager);
    }
    if (offers_.seat != nullptr) {
        wl_seat_destroy(offers_.seat);
    }
    wl_registry_destroy(registry_);
    wl_display_flush(display_);
    wl_display_disconnect(display_);
    keyboard_ = nullptr;
    offers_ = {};
    display_ = nullptr;
}

bool WaylandConnection::Await(short events, Clock::time_point until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    pollfd file{wl_display_get_fd(display_), events, 0};
    const int ready = poll(&file, 1, static_cast<int>(std::max<long>(left, 0)));
    return ready > 0 || (ready < 0 && errno == EINTR && left > 0);
}

bool WaylandConnection::RoundTrip() {
    bool answered = false;
    wl_callback* callback = wl_display_sync(display_);
    wl_callback_add_listener(callback, &AnswerListener, &answered);
    const auto until = Clock::now() + LongestWait;
    Flush();
    while (!answered) {
        while (wl_display_prepare_read(display_) != 0) {
            wl_display_dispatch_pending(display_);
        }
        if (answered || wl_display_get_error(display_) != 0 || !Await(POLLIN, until)) {
            wl_display_cancel_read(display_);
            break;
        }
        if (wl_display_read_events(display_) < 0 || wl_display_dispatch_pending(display_) < 0) {
            break;
        }
    }
    if (!answered) {
        wl_callback_destroy(callback);
    }
    return answered && wl_display_get_error(display_) == 0;
}

// Takes what the display server has to say; nobody else does, and it must not pile up.
bool WaylandConnection::Usable() {
    if (keyboard_ == nullptr) {
        return false;
    }
    while (wl_display_prepare_read(display_) != 0) {
        wl_display_dispatch_pending(display_);
    }
    if (Await(POLLIN, Clock::now())) {
        wl_display_read_events(display_);
    } else {
        wl_display_cancel_read(display_);
    }
    return wl_display_dispatch_pending(display_) >= 0 && wl_display_get_error(display_) == 0;
}

void WaylandConnection::Key(unsigned time, unsigned key, bool down) {
    zwp_virtual_keyboard_v1_key(keyboard_, time, key,
                                down ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

void WaylandConnection::Modifiers(unsigned modifiers) {
    zwp_virtual_keyboard_v1_modifiers(keyboard_, modifiers, 0, 0, 0);
}

void WaylandConnection::Flush() {
    const auto until = Clock::now() + LongestWait;
    while (wl_display_flush(display_) < 0) {
        if (errno != EAGAIN || !Await(POLLOUT, until)) {
            // Half a message may be out: nothing that follows would be understood.
            shutdown(wl_display_get_fd(display_), SHUT_RDWR);
            return;
        }
    }
}

}  // namespace layer
