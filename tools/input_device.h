// One input device of the kernel's, which may go and come.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

// A key went down or came up. Repeats of a key that is held are none.
struct KeyEvent {
    unsigned Code;
    bool Down;
};

class InputDevice {
  public:
    // How long after a try to open it the next one comes.
    static constexpr std::chrono::milliseconds RetryPause{500};

    // `grab`: nobody else is to get the device's keys while we have it.
    InputDevice(std::string path, bool grab) : path_(std::move(path)), grab_(grab) {}
    ~InputDevice() { Close(); }
    InputDevice(const InputDevice&) = delete;
    InputDevice& operator=(const InputDevice&) = delete;

    const std::string& Path() const { return path_; }
    // -1 while the device is away.
    int File() const { return file_; }
    // Opens it when it is away; says on standard error once why it cannot. Keys that are down already count
    // when they are pressed again.
    bool Open();
    // Takes what has happened. False when the device has gone: keys that were down have come up then.
    bool Read(const std::function<void(KeyEvent)>& take);

  private:
    void Close();
    void Look(std::vector<bool>& down) const;
    void Set(unsigned code, bool down, const std::function<void(KeyEvent)>& take);
    void GrabWhenFree();
    void Complain(const char* what, int error);

    std::string path_;
    bool grab_;
    bool grabbed_ = false;
    bool skipping_ = false;  // until the report that ends a gap
    int file_ = -1;
    int complaint_ = 0;       // the error that was said last
    std::vector<bool> down_;  // by key code
    std::chrono::steady_clock::time_point lastTry_{};
};
