// A terminal with everything that a delivery touches: settings, message queue, event, main window, keyboard.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "tests/support/temporary_terminal.h"

struct KeyEvent {
    BYTE Key;
    bool Up;
    std::uint64_t Time;
};

// A keyboard that keeps the key events of all threads.
class KeyLog : public layer::KeyboardBackend {
  public:
    void Key(BYTE key, bool up) override;
    void ReleaseAll() override {}
    std::vector<KeyEvent> Events() const;
    void Clear();
    // What an application gets. Fails the test on a key that is pressed twice, released unpressed or left
    // down.
    std::string Text() const;

  private:
    mutable std::mutex mutex_;
    std::vector<KeyEvent> events_;
};

class DeliveryTerminal {
  public:
    // Settings as on a new terminal with that reader, but no ENTER and no feedback.
    explicit DeliveryTerminal(WORD devices, layer::Clock* clock = nullptr);
    ~DeliveryTerminal();
    DeliveryTerminal(const DeliveryTerminal&) = delete;
    DeliveryTerminal& operator=(const DeliveryTerminal&) = delete;

    // Does the work on a thread of its own while this one serves the windows.
    void OnReceiveThread(const std::function<void()>& work) { OnReceiveThreads({work}); }
    void OnReceiveThreads(const std::vector<std::function<void()>>& works);
    // Takes the record out of the queue; empty when there is none.
    std::string TakeRecord();
    // Whether the event was set; it is reset.
    bool TakeEvent();

    TemporaryTerminal Terminal;
    KeyLog* Keys;
    // What the main window has been sent: "copydata", "decode 7".
    std::vector<std::string> Messages;
};
