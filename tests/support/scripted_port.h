// A serial port whose other end is a conversation. It keeps the platform's rules for time-outs, purging, the
// event mask and exclusive opening, on the manual clock.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/serial/serial_port.h"
#include "tests/support/conversation.h"

// A port as it was set last: the line's speed (0: never set), and how long a write may take.
struct PortLine {
    bool Open = false;
    DWORD Rate = 0, WriteTime = 0;
};

// Makes the ports "COM1:" to "COM9:" scripted ones while it lives. `onIdle` is called in the main thread when
// a wait for an event would never end, as the script has come to its end; the wait then fails.
class ScriptedPorts {
  public:
    ScriptedPorts(Conversation& conversation, std::function<void()> onIdle);
    ~ScriptedPorts();
    ScriptedPorts(const ScriptedPorts&) = delete;
    ScriptedPorts& operator=(const ScriptedPorts&) = delete;

    PortLine LineOf(int port) const;

  private:
    struct State;
    class Port;
    std::shared_ptr<State> state_;
};
