// A serial port behind the platform's serial calls. tty.cpp is the real one; tests have a scripted one.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/kernel/object.h"
#include "platform/serial.h"

namespace layer {

class SerialPort : public Stream {
  public:
    virtual BOOL GetState(DCB& state) = 0;
    virtual BOOL SetState(const DCB& state) = 0;
    virtual BOOL GetTimeouts(COMMTIMEOUTS& timeouts) = 0;
    // Read interval and write constant; the others must be 0.
    virtual BOOL SetTimeouts(const COMMTIMEOUTS& timeouts) = 0;
    virtual BOOL Purge(DWORD flags) = 0;
    virtual BOOL SetMask(DWORD mask) = 0;
    virtual BOOL WaitEvent(DWORD& events) = 0;
    virtual BOOL ClearError(DWORD& errors, COMSTAT& status) = 0;
    virtual BOOL SetBreak(bool on) = 0;
};

// Opens the port with the name ("COM1:" to "COM9:"); null when it cannot be opened or is open already.
using SerialOpener = std::function<std::shared_ptr<SerialPort>(const std::string& name)>;
std::shared_ptr<SerialPort> OpenTty(const std::string& name);
// The one place that chooses: OpenTty, or what a test has installed (null: OpenTty again).
std::shared_ptr<SerialPort> OpenSerialPort(const std::string& name);
void InstallSerialOpener(SerialOpener opener);
// The port of a handle; null when it has none.
std::shared_ptr<SerialPort> FindPort(HANDLE handle);

}  // namespace layer
