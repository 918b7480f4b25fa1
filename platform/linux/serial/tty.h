// The real serial port: a tty that the terminal folder links to.
//
// Received bytes go through a queue of the port's own. A waiting call looks at the queue, takes nothing until
// its result is complete, and sleeps in poll() on the tty and on the port's bell; so it can be closed or
// woken at any moment without losing a byte. tty.cpp has the port's state, tty_transfer.cpp what waits.
#pragma once

#include <chrono>
#include <mutex>

#include "platform/linux/kernel/posix.h"
#include "platform/linux/serial/receive_queue.h"
#include "platform/linux/serial/serial_port.h"
#include "platform/linux/serial/tty_line.h"
#include "platform/linux/serial/wire_trace.h"

namespace layer {

class Tty : public SerialPort {
  public:
    Tty(std::string path, std::uint64_t link, std::shared_ptr<TtyLine> line, Waker bell);

    BOOL Read(void* buffer, DWORD size, DWORD& read) override;
    BOOL Write(const void* buffer, DWORD size, DWORD& written) override;
    BOOL GetState(DCB& state) override;
    BOOL SetState(const DCB& state) override;
    BOOL GetTimeouts(COMMTIMEOUTS& timeouts) override;
    BOOL SetTimeouts(const COMMTIMEOUTS& timeouts) override;
    BOOL Purge(DWORD flags) override;
    BOOL SetMask(DWORD mask) override;
    BOOL WaitEvent(DWORD& events) override;
    BOOL ClearError(DWORD& errors, COMSTAT& status) override;
    BOOL SetBreak(bool on) override;
    bool Close() override;

  private:
    using Moment = std::chrono::steady_clock::time_point;
    using Lock = std::unique_lock<std::mutex>;
    static constexpr Moment Never = Moment::max();

    bool Pump(bool discardExcess);
    bool Reopen();
    void Lose(const std::shared_ptr<TtyLine>& line);
    void Sleep(Lock& lock, std::shared_ptr<TtyLine> line, short events, Moment until);
    void WakeAll();
    DWORD TakeEvents();
    Moment ReadEnd() const;
    void Note(const std::string& what) const;

    const std::string path_;
    const std::unique_ptr<WireTrace> trace_;  // null unless somebody wants one
    std::uint64_t link_;                      // the identity of the path's links when the line was opened
    bool pseudo_;                             // the line is a pseudo-terminal, or was one
    std::mutex writing_;                      // one frame after the other; taken before mutex_
    std::mutex mutex_;                        // everything below
    std::shared_ptr<TtyLine> line_;           // null while unplugged, and once closed
    DCB state_{};
    COMMTIMEOUTS timeouts_{};
    DWORD mask_ = 0;
    unsigned masksSet_ = 0, readsAborted_ = 0;
    bool closed_ = false;
    ReceiveQueue queue_;
    Moment lastArrival_{};
    const Waker bell_;  // ends every sleep
    int sleepers_ = 0;
    bool rung_ = false;
};

}  // namespace layer
