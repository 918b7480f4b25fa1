// One opened tty: raw, non-blocking, exclusive. It knows the device, not the platform's serial calls.
#pragma once

#include <memory>
#include <string>

#include "platform/base.h"

namespace layer {

class TtyLine {
  public:
    // Opens the tty and locks it against every other user of the same device, by whatever link; `speed` 0
    // keeps the device's own. Null when it is no tty, is gone, or is in use. /dev/null is a line with nobody
    // on it: a pseudo-terminal whose other end stays silent.
    static std::shared_ptr<TtyLine> Open(const std::string& path, DWORD speed);
    ~TtyLine();
    TtyLine(const TtyLine&) = delete;
    TtyLine& operator=(const TtyLine&) = delete;

    int Fd() const { return fd_; }
    bool IsPseudo() const { return pseudo_; }
    DWORD Speed() const;
    // False for a speed that the device does not have; the old one stays.
    bool SetSpeed(DWORD speed);
    // Sets the modem lines, where there are any.
    void SetModemLines(bool dtr, bool rts);
    // False where the device cannot send a break.
    bool SetBreak(bool on);
    void DiscardInput();
    void DiscardOutput();
    // Bytes written that have not left yet.
    DWORD Queued() const;
    // Milliseconds that the line needs for so many bytes, those still queued included.
    DWORD LineTime(DWORD bytes) const;
    // Waits until the last bit has left, no longer than the line needs for what is queued and some.
    void WaitSent() const;
    // Another program may open the device from now on, though a thread may still be on its way out of a wait
    // on this one.
    void Unlock();

  private:
    TtyLine(int fd, bool pseudo, int otherEnd) : fd_(fd), pseudo_(pseudo), otherEnd_(otherEnd) {}
    bool Configure(DWORD speed);

    const int fd_;
    const bool pseudo_;   // a pseudo-terminal: no modem lines, no break, no line time
    const int otherEnd_;  // of a silent line; else -1
};

// Tells a path's links from those that replace them; another number when any link on the way has been made
// anew.
std::uint64_t LinkIdentity(std::string path);
// Whether the speed is one that a tty can have.
bool KnownSpeed(DWORD speed);

}  // namespace layer
