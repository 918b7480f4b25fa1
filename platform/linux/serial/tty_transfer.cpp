#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/serial/tty.h"

namespace layer {

namespace {

using std::chrono::milliseconds, std::chrono::seconds;

// How long a wait on an unplugged port takes before it looks whether the reader is back, and fails.
constexpr milliseconds UnpluggedPause{250};

auto Now() {
    return std::chrono::steady_clock::now();
}

}  // namespace

// Moves what the tty holds into the queue; says whether the tty is still there. What does not fit stays in
// the tty, unless nobody waits for bytes.
bool Tty::Pump(bool discardExcess) {
    std::array<BYTE, 512> chunk;
    bool arrived = false;
    while (line_ && (queue_.Room() > 0 || discardExcess)) {
        const std::size_t wanted = discardExcess ? chunk.size() : std::min(chunk.size(), queue_.Room());
        const ssize_t got = read(line_->Fd(), chunk.data(), wanted);
        if (got > 0) {
            queue_.Add({chunk.data(), static_cast<std::size_t>(got)}, trace_.get());
            arrived = true;
            if (static_cast<std::size_t>(got) < wanted) {
                break;  // what is left, if anything, ends the next wait at once
            }
        } else if (got < 0 && errno == EAGAIN) {
            break;
        } else if (got == 0 || errno != EINTR) {
            Lose(line_);
        }
    }
    if (arrived) {
        lastArrival_ = Now();
        WakeAll();
    }
    return line_ != nullptr;
}

// Sleeps without the lock until the tty has one of the events, the bell rings, or the time has come. The bell
// rings until all have woken.
void Tty::Sleep(Lock& lock, std::shared_ptr<TtyLine> line, short events, Moment until) {
    ++sleepers_;
    lock.unlock();
    using std::chrono::nanoseconds, std::chrono::minutes;
    const ExactWait wait(until);
    const auto left =
        until == Never ? nanoseconds{} : std::clamp<nanoseconds>(wait.Alarm() - Now(), {}, minutes(1));
    const timespec timeout{left / seconds(1), (left % seconds(1)).count()};
    pollfd files[] = {{bell_.Number(), POLLIN, 0}, {line ? line->Fd() : -1, events, 0}};
    if (ppoll(files, std::size(files), until == Never ? nullptr : &timeout, nullptr) == 0 &&
        left < minutes(1)) {
        wait.Finish();
    }
    lock.lock();
    if (--sleepers_ == 0 && std::exchange(rung_, false)) {
        bell_.Clear();
    }
}

void Tty::WakeAll() {
    if (sleepers_ > 0 && !std::exchange(rung_, true)) {
        bell_.Wake();
    }
}

// When a read is over that gets nothing more.
Tty::Moment Tty::ReadEnd() const {
    if (timeouts_.ReadIntervalTimeout == MAXDWORD) {
        return Moment::min();
    }
    return queue_.Count() > 0 ? lastArrival_ + milliseconds(timeouts_.ReadIntervalTimeout) : Never;
}

BOOL Tty::Read(void* buffer, DWORD size, DWORD& read) {
    read = 0;
    // A read never needs more than the queue can hold to be complete.
    const DWORD wanted = std::min<DWORD>(size, ReceiveQueue::Size - 1);
    Lock lock(mutex_);
    const unsigned aborted = readsAborted_;
    while (!closed_ && aborted == readsAborted_) {
        const bool live = Pump(false) || Reopen();
        if (!live && queue_.Count() == 0) {
            return FALSE;
        }
        const Moment end = ReadEnd();
        if (queue_.Count() >= wanted || !live || Now() >= end) {
            read = queue_.Take(static_cast<BYTE*>(buffer), size);
            return TRUE;
        }
        Sleep(lock, line_, POLLIN, end);
    }
    return FALSE;
}

BOOL Tty::Write(const void* buffer, DWORD size, DWORD& written) {
    written = 0;
    const std::lock_guard turn(writing_);
    Lock lock(mutex_);
    if (!Reopen()) {
        return FALSE;
    }
    const std::shared_ptr<TtyLine> line = line_;
    // The time-out is there for a line that has stopped; a slow line gets the time it needs.
    const DWORD stopped = timeouts_.WriteTotalTimeoutConstant;
    Moment end = Never;
    while (written < size) {
        if (closed_) {
            return FALSE;
        }
        const BYTE* rest = static_cast<const BYTE*>(buffer) + written;
        const ssize_t put = write(line->Fd(), rest, size - written);
        if (put > 0) {
            if (trace_) {
                trace_->Sent({rest, static_cast<std::size_t>(put)});
            }
            written += static_cast<DWORD>(put);
        } else if (put < 0 && errno == EAGAIN) {
            if (end == Never && stopped != 0) {
                end = Now() + milliseconds(stopped + line->LineTime(size));
            }
            if (Now() >= end) {
                break;
            }
            Sleep(lock, line, POLLOUT, end);
        } else if (put == 0 || errno != EINTR) {
            Lose(line);
            return FALSE;
        }
    }
    lock.unlock();
    line->WaitSent();
    return TRUE;
}

BOOL Tty::SetMask(DWORD mask) {
    const Lock lock(mutex_);
    mask_ = mask;
    queue_.Broke = false;
    ++masksSet_;
    WakeAll();
    return !closed_;
}

// What has happened of the mask's events. A break counts once, bytes until they are read.
DWORD Tty::TakeEvents() {
    const DWORD bytes = queue_.Count() > 0 ? mask_ & EV_RXCHAR : 0;
    const DWORD broke = queue_.Broke ? mask_ & EV_BREAK : 0;
    queue_.Broke = queue_.Broke && broke == 0;
    return bytes | broke;
}

BOOL Tty::WaitEvent(DWORD& events) {
    events = 0;
    Lock lock(mutex_);
    const unsigned masksSet = masksSet_;
    bool waitedUnplugged = false;
    while (!closed_ && masksSet_ == masksSet) {
        if (mask_ == 0) {
            // Nothing to wait for until another thread says so, or closes the port.
            Sleep(lock, nullptr, 0, Never);
            continue;
        }
        const bool live = Pump((mask_ & EV_RXCHAR) == 0);
        events = TakeEvents();
        if (events != 0) {
            return TRUE;
        }
        if (live || (waitedUnplugged && Reopen())) {
            waitedUnplugged = false;
            Sleep(lock, line_, POLLIN, Never);
        } else if (waitedUnplugged) {
            return FALSE;
        } else {
            const Moment until = Now() + UnpluggedPause;
            while (!closed_ && masksSet_ == masksSet && Now() < until) {
                Sleep(lock, nullptr, 0, until);
            }
            waitedUnplugged = true;
        }
    }
    return !closed_;
}

}  // namespace layer
