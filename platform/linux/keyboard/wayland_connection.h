// A virtual keyboard of the Wayland session, over a connection of its own.
#pragma once

#include <chrono>
#include <string>

struct wl_display;
struct wl_registry;
struct wl_seat;
struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace layer {

class WaylandConnection {
  public:
    enum class Result { Connected, NoDisplay, NoProtocol };

    WaylandConnection() = default;
    ~WaylandConnection() { Close(); }
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    // Connects to $WAYLAND_DISPLAY and makes the keyboard with the key map; waits 2 s at most.
    Result Open(const std::string& keyMap);
    void Close();
    // False once the display server has gone or has thrown us out.
    bool Usable();

    // One event; `time` in milliseconds, `key` the kernel's code, `modifiers` a mask of the key map.
    void Key(unsigned time, unsigned key, bool down);
    void Modifiers(unsigned modifiers);
    // Hands over what was sent. A display server that does not take it for 2 s counts as gone.
    void Flush();

    // What the registry offers; for its listener alone.
    struct Offers {
        wl_seat* seat = nullptr;
        zwp_virtual_keyboard_manager_v1* manager = nullptr;
    };

  private:
    bool RoundTrip();
    bool Await(short events, std::chrono::steady_clock::time_point until);

    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    Offers offers_;
    zwp_virtual_keyboard_v1* keyboard_ = nullptr;
};

}  // namespace layer
