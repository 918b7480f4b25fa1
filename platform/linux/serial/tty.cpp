// The real serial port: a tty that the terminal folder links to.
//
// Received bytes go through a queue of the port's own. A waiting call looks at the queue, takes nothing until
// its result is complete, and sleeps in poll() on the tty and on its thread's wake descriptor; so it can be
// closed or woken at any moment without losing a byte.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <mutex>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/kernel/wake_fd.h"
#include "platform/linux/serial/receive_queue.h"
#include "platform/linux/serial/serial_port.h"
#include "platform/linux/serial/tty_line.h"
#include "platform/linux/serial/wire_trace.h"

namespace layer {
namespace {

using Moment = std::chrono::steady_clock::time_point;
using std::chrono::milliseconds;
constexpr Moment Never = Moment::max();

// How long a wait on an unplugged port takes before it looks whether the reader is back, and fails.
constexpr milliseconds UnpluggedPause{250};
constexpr DWORD DefaultSpeed = 9600;

Moment Now() {
    return std::chrono::steady_clock::now();
}

class Tty : public SerialPort {
  public:
    Tty(std::string path, std::uint64_t link, std::shared_ptr<TtyLine> line)
        : path_(std::move(path)),
          trace_(WireTrace::Of(path_.substr(path_.rfind('/') + 1))),
          link_(link),
          pseudo_(line->IsPseudo()),
          line_(std::move(line)) {
        state_.DCBlength = sizeof state_;
        state_.BaudRate = line_->Speed() != 0 ? line_->Speed() : DefaultSpeed;
        state_.fBinary = 1;
        state_.ByteSize = 8;
        // The kernel raises both lines when a tty is opened.
        state_.fDtrControl = DTR_CONTROL_ENABLE;
        state_.fRtsControl = RTS_CONTROL_ENABLE;
        Note("open");
        Note("rate " + std::to_string(state_.BaudRate));
    }

    BOOL Read(void* buffer, DWORD size, DWORD& read) override;
    BOOL Write(const void* buffer, DWORD size, DWORD& written) override;
    BOOL SetQueues(DWORD input, DWORD output) override { return input != 0 && output != 0; }
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
    // A thread in Sleep, on its stack.
    struct Sleeper {
        int wake;
        Sleeper* next;
    };
    using Lock = std::unique_lock<std::mutex>;

    bool Pump(bool discardExcess);
    bool Reopen();
    void Lose(const std::shared_ptr<TtyLine>& line);
    void Sleep(Lock& lock, int wake, const std::shared_ptr<TtyLine>& line, short events, Moment until);
    void WakeAll();
    void Note(std::string_view what) const;
    void NoteState(const DCB& state) const;
    Moment ReadEnd(DWORD size, Moment start) const;

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
    unsigned masksSet_ = 0, readsAborted_ = 0, writesAborted_ = 0;
    bool closed_ = false;
    ReceiveQueue queue_;
    Moment lastArrival_{};
    Sleeper* sleepers_ = nullptr;
};

// Moves what the tty holds into the queue; says whether the tty is still there. What does not fit stays in
// the tty, unless nobody waits for bytes.
bool Tty::Pump(bool discardExcess) {
    if (!line_) {
        return false;
    }
    std::array<BYTE, 512> chunk;
    bool arrived = false;
    while (queue_.Room() > 0 || discardExcess) {
        const std::size_t wanted = discardExcess ? chunk.size() : std::min(chunk.size(), queue_.Room());
        const ssize_t got = read(line_->Fd(), chunk.data(), wanted);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 && errno == EAGAIN) {
            break;
        }
        if (got <= 0) {
            Lose(line_);
            break;
        }
        queue_.Add({chunk.data(), static_cast<std::size_t>(got)}, trace_.get());
        arrived = true;
    }
    if (arrived) {
        lastArrival_ = Now();
        WakeAll();
    }
    return line_ != nullptr;
}

// Tries to use a reader that has come back, as the lost one was set up.
bool Tty::Reopen() {
    if (closed_) {
        return false;
    }
    if (line_) {
        return true;
    }
    // A pseudo-terminal never comes back, but its name soon goes to a stranger's: somebody has to link anew.
    const std::uint64_t link = LinkIdentity(path_);
    if (pseudo_ && link == link_) {
        return false;
    }
    line_ = TtyLine::Open(path_, state_.BaudRate);
    if (!line_) {
        return false;
    }
    link_ = link;
    pseudo_ = line_->IsPseudo();
    line_->SetModemLines(state_.fDtrControl != DTR_CONTROL_DISABLE,
                         state_.fRtsControl != RTS_CONTROL_DISABLE);
    queue_.ForgetMark();
    Note("back");
    Say(LogPriority::Notice, "%s is back", path_.c_str());
    return true;
}

void Tty::Lose(const std::shared_ptr<TtyLine>& line) {
    if (!line || line_ != line) {
        return;
    }
    line_->Unlock();
    line_.reset();
    Note("lost");
    Say(LogPriority::Warning, "%s has gone", path_.c_str());
    WakeAll();
}

void Tty::Note(std::string_view what) const {
    if (trace_) {
        trace_->Changed(what);
    }
}

// Only what changes is noted.
void Tty::NoteState(const DCB& state) const {
    if (!trace_) {
        return;
    }
    if (state.BaudRate != state_.BaudRate) {
        Note("rate " + std::to_string(state.BaudRate));
    }
    if (state.fDtrControl != state_.fDtrControl) {
        Note(state.fDtrControl != DTR_CONTROL_DISABLE ? "dtr on" : "dtr off");
    }
    if (state.fRtsControl != state_.fRtsControl) {
        Note(state.fRtsControl != RTS_CONTROL_DISABLE ? "rts on" : "rts off");
    }
}

void Tty::WakeAll() {
    for (const Sleeper* sleeper = sleepers_; sleeper != nullptr; sleeper = sleeper->next) {
        WakeFd(sleeper->wake);
    }
}

// Sleeps without the lock until the tty has one of the events, the thread is woken, or the time has come.
void Tty::Sleep(Lock& lock, int wake, const std::shared_ptr<TtyLine>& line, short events, Moment until) {
    const std::shared_ptr<TtyLine> used = line;  // keeps the descriptor from being closed and given anew
    Sleeper self{wake, sleepers_};
    sleepers_ = &self;
    lock.unlock();

    int timeout = -1;
    if (until != Never) {
        const auto left = std::chrono::ceil<milliseconds>(until - Now()).count();
        timeout = static_cast<int>(std::clamp<long long>(left, 0, 60000));
    }
    if (wake < 0) {
        timeout = timeout < 0 ? 20 : std::min(timeout, 20);
    }
    std::array<pollfd, 2> fds{{{wake, POLLIN, 0}, {used ? used->Fd() : -1, events, 0}}};
    poll(fds.data(), fds.size(), timeout);
    ClearWakeFd(wake);

    lock.lock();
    for (Sleeper** link = &sleepers_; *link != nullptr; link = &(*link)->next) {
        if (*link == &self) {
            *link = self.next;
            break;
        }
    }
}

// When a read that has got nothing new is over, by the time-outs.
Moment Tty::ReadEnd(DWORD size, Moment start) const {
    const DWORD interval = timeouts_.ReadIntervalTimeout, multiplier = timeouts_.ReadTotalTimeoutMultiplier,
                constant = timeouts_.ReadTotalTimeoutConstant;
    Moment end = Never;
    if (interval == MAXDWORD && multiplier == 0 && constant == 0) {
        return start;
    }
    if (interval == MAXDWORD && multiplier == MAXDWORD) {
        return queue_.Count() > 0 ? start : start + milliseconds(constant);
    }
    if (multiplier != 0 || constant != 0) {
        end = start + milliseconds(std::uint64_t{multiplier} * size + constant);
    }
    if (interval != 0 && interval != MAXDWORD && queue_.Count() > 0) {
        end = std::min(end, lastArrival_ + milliseconds(interval));
    }
    return end;
}

BOOL Tty::Read(void* buffer, DWORD size, DWORD& read) {
    read = 0;
    const int wake = ThreadWakeFd();
    const Moment start = Now();
    // A read never needs more than the queue can hold to be complete.
    const DWORD wanted = std::min<DWORD>(size, ReceiveQueue::Size - 1);
    Lock lock(mutex_);
    const unsigned aborted = readsAborted_;
    for (;;) {
        if (closed_ || aborted != readsAborted_) {
            return FALSE;
        }
        const bool live = Pump(false) || Reopen();
        if (!live && queue_.Count() == 0) {
            return FALSE;
        }
        const Moment end = ReadEnd(size, start);
        if (queue_.Count() >= wanted || !live || Now() >= end) {
            read = queue_.Take(static_cast<BYTE*>(buffer), size);
            return TRUE;
        }
        Sleep(lock, wake, line_, POLLIN, end);
    }
}

BOOL Tty::Write(const void* buffer, DWORD size, DWORD& written) {
    written = 0;
    if (size == 0) {
        return TRUE;
    }
    const int wake = ThreadWakeFd();
    const std::lock_guard turn(writing_);
    Lock lock(mutex_);
    if (!Reopen()) {
        return FALSE;
    }
    const unsigned aborted = writesAborted_;
    const std::shared_ptr<TtyLine> line = line_;
    Moment end = Never;
    if (timeouts_.WriteTotalTimeoutMultiplier != 0 || timeouts_.WriteTotalTimeoutConstant != 0) {
        // The time-out is there for a line that has stopped; a slow line gets the time it needs.
        end = Now() + milliseconds(std::uint64_t{timeouts_.WriteTotalTimeoutMultiplier} * size +
                                   timeouts_.WriteTotalTimeoutConstant + line->LineTime(size));
    }
    while (written < size) {
        if (closed_ || aborted != writesAborted_) {
            return FALSE;
        }
        const ssize_t put = write(line->Fd(), static_cast<const BYTE*>(buffer) + written, size - written);
        if (put > 0) {
            if (trace_) {
                trace_->Sent({static_cast<const BYTE*>(buffer) + written, static_cast<std::size_t>(put)});
            }
            written += static_cast<DWORD>(put);
        } else if (put < 0 && errno == EAGAIN) {
            if (Now() >= end) {
                break;
            }
            Sleep(lock, wake, line, POLLOUT, end);
        } else if (put == 0 || errno != EINTR) {
            Lose(line);
            return FALSE;
        }
    }
    lock.unlock();
    line->WaitSent();
    return TRUE;
}

BOOL Tty::GetState(DCB& state) {
    const Lock lock(mutex_);
    if (closed_) {
        return FALSE;
    }
    state = state_;
    return TRUE;
}

BOOL Tty::SetState(const DCB& state) {
    const bool supported = KnownSpeed(state.BaudRate) && state.ByteSize == 8 && state.Parity == NOPARITY &&
                           state.StopBits == ONESTOPBIT && !state.fOutxCtsFlow && !state.fOutxDsrFlow &&
                           !state.fDsrSensitivity && !state.fOutX && !state.fInX && !state.fNull &&
                           state.fDtrControl <= DTR_CONTROL_ENABLE && state.fRtsControl <= RTS_CONTROL_ENABLE;
    if (!supported) {
        return FALSE;
    }
    const std::lock_guard turn(writing_);
    Lock lock(mutex_);
    if (!Reopen()) {
        return FALSE;
    }
    const std::shared_ptr<TtyLine> line = line_;
    const bool dropsRts =
        state_.fRtsControl != RTS_CONTROL_DISABLE && state.fRtsControl == RTS_CONTROL_DISABLE;
    if (dropsRts || state.BaudRate != state_.BaudRate) {
        // The reader must get the last bit as it got the first.
        lock.unlock();
        line->WaitSent();
        lock.lock();
        if (line_ != line) {
            return FALSE;
        }
    }
    if (!line->SetSpeed(state.BaudRate)) {
        return FALSE;
    }
    line->SetModemLines(state.fDtrControl != DTR_CONTROL_DISABLE, state.fRtsControl != RTS_CONTROL_DISABLE);
    NoteState(state);
    state_ = state;
    return TRUE;
}

BOOL Tty::GetTimeouts(COMMTIMEOUTS& timeouts) {
    const Lock lock(mutex_);
    timeouts = timeouts_;
    return !closed_;
}

BOOL Tty::SetTimeouts(const COMMTIMEOUTS& timeouts) {
    const Lock lock(mutex_);
    if (closed_) {
        return FALSE;
    }
    timeouts_ = timeouts;
    WakeAll();
    return TRUE;
}

BOOL Tty::Purge(DWORD flags) {
    const Lock lock(mutex_);
    if (closed_) {
        return FALSE;
    }
    if (flags & PURGE_TXABORT) {
        ++writesAborted_;
    }
    if (flags & PURGE_RXABORT) {
        ++readsAborted_;
    }
    if ((flags & PURGE_TXCLEAR) && line_) {
        line_->DiscardOutput();
    }
    if (flags & PURGE_RXCLEAR) {
        if (line_) {
            line_->DiscardInput();
        }
        queue_.Clear();
    }
    WakeAll();
    return TRUE;
}

BOOL Tty::SetMask(DWORD mask) {
    const Lock lock(mutex_);
    if (closed_) {
        return FALSE;
    }
    mask_ = mask;
    queue_.Broke = false;
    ++masksSet_;
    WakeAll();
    return TRUE;
}

BOOL Tty::WaitEvent(DWORD& events) {
    events = 0;
    const int wake = ThreadWakeFd();
    Lock lock(mutex_);
    const unsigned masksSet = masksSet_;
    bool waitedUnplugged = false;
    for (;;) {
        if (closed_) {
            return FALSE;
        }
        if (masksSet_ != masksSet) {
            return TRUE;
        }
        if (mask_ == 0) {
            // Nothing to wait for until another thread says so, or closes the port.
            Sleep(lock, wake, nullptr, 0, Never);
            continue;
        }
        const bool live = Pump((mask_ & EV_RXCHAR) == 0);
        if (queue_.Broke && (mask_ & EV_BREAK) != 0) {
            events |= EV_BREAK;
        }
        if (queue_.Count() > 0 && (mask_ & EV_RXCHAR) != 0) {
            events |= EV_RXCHAR;
        }
        if (events != 0) {
            if (events & EV_BREAK) {
                queue_.Broke = false;
            }
            return TRUE;
        }
        if (live || (waitedUnplugged && Reopen())) {
            waitedUnplugged = false;
            Sleep(lock, wake, line_, POLLIN, Never);
        } else if (waitedUnplugged) {
            return FALSE;
        } else {
            const Moment until = Now() + UnpluggedPause;
            while (!closed_ && masksSet_ == masksSet && Now() < until) {
                Sleep(lock, wake, nullptr, 0, until);
            }
            waitedUnplugged = Now() >= until;
        }
    }
}

BOOL Tty::ClearError(DWORD& errors, COMSTAT& status) {
    const Lock lock(mutex_);
    errors = 0;
    status = COMSTAT{};
    if (closed_ || !Pump(false)) {
        return FALSE;
    }
    status.cbInQue = static_cast<DWORD>(queue_.Count());
    status.cbOutQue = line_->Queued();
    return TRUE;
}

BOOL Tty::SetBreak(bool on) {
    const Lock lock(mutex_);
    if (!line_ || !line_->SetBreak(on)) {
        return FALSE;
    }
    Note(on ? "break on" : "break off");
    return TRUE;
}

bool Tty::Close() {
    const Lock lock(mutex_);
    if (!closed_) {
        Note("close");
    }
    closed_ = true;
    if (line_) {
        // A thread on its way out of a wait may hold the line a moment longer; the port is free already.
        line_->DiscardOutput();
        line_->Unlock();
        line_.reset();
    }
    WakeAll();
    return true;
}

}  // namespace

std::shared_ptr<SerialPort> OpenTty(const std::string& name) {
    std::string port;
    for (const char c : name) {
        port += static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    if (port.size() != 5 || port.compare(0, 3, "COM") != 0 || port[3] < '0' || port[3] > '9' ||
        port[4] != ':') {
        return nullptr;
    }
    const std::string path = TerminalFolder() + "/" + port.substr(0, 4);
    const std::uint64_t link = LinkIdentity(path);
    std::shared_ptr<TtyLine> line = TtyLine::Open(path, 0);
    return line ? std::make_shared<Tty>(path, link, std::move(line)) : nullptr;
}

}  // namespace layer
