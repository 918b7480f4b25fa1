#include "platform/win32/serial_port.h"

#include <algorithm>
#include <utility>

namespace layer {

namespace {

constexpr std::int64_t Never = INT64_MAX;
// How long a wait on an unplugged port takes before it looks whether the reader is back, and fails.
constexpr DWORD UnpluggedPause = 250;

// The line's own time-outs: none. A read of it ends with the bytes that it asks for.
constexpr COMMTIMEOUTS Patient = {};

// Milliseconds that so many bytes need on the line: ten bits each.
DWORD LineTime(DWORD rate, DWORD bytes) {
    return static_cast<DWORD>(std::uint64_t{bytes} * 10 * 1000 / std::max<DWORD>(rate, 300)) + 1;
}

}  // namespace

bool SerialPort::Open() {
    const Guard line(lineLock_);
    state_.DCBlength = sizeof state_;
    if (!OpenLine()) {
        return false;
    }
    // What the driver has been left with by others must not stop the line.
    state_.fBinary = TRUE;
    state_.fOutxCtsFlow = state_.fOutxDsrFlow = state_.fDsrSensitivity = FALSE;
    state_.fOutX = state_.fInX = state_.fNull = state_.fErrorChar = state_.fAbortOnError = FALSE;
    SetCommState(line_, &state_);
    return true;
}

// Opens the device and starts its reader; lineLock_ is held.
bool SerialPort::OpenLine() {
    const HANDLE line = CreateFileW(device_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OVERLAPPED, nullptr);
    if (line == INVALID_HANDLE_VALUE) {
        return false;
    }
    COMMTIMEOUTS timeouts = Patient;
    const bool fresh = state_.BaudRate == 0;
    if (!SetCommTimeouts(line, &timeouts) ||
        (fresh ? !GetCommState(line, &state_) : !SetCommState(line, &state_))) {
        CloseHandle(line);
        return false;
    }
    stop_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    wrote_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    arrived_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    line_ = line;
    {
        const Guard queue(queueLock_);
        lost_ = false;
    }
    reader_ = CreateThread(nullptr, 0, RunReader, this, 0, nullptr);
    if (stop_ == nullptr || wrote_ == nullptr || arrived_ == nullptr || reader_ == nullptr) {
        CloseLine();
        return false;
    }
    return true;
}

// lineLock_ is held. The device is free for others when this returns.
void SerialPort::CloseLine() {
    if (reader_ != nullptr) {
        SetEvent(stop_);
        {
            const Guard queue(queueLock_);
            WakeAllConditionVariable(&changed_);
        }
        WaitForSingleObject(reader_, INFINITE);
    }
    for (HANDLE* handle : {&reader_, &stop_, &wrote_, &arrived_, &line_}) {
        if (*handle != nullptr) {
            CloseHandle(std::exchange(*handle, nullptr));
        }
    }
}

void SerialPort::Close() {
    {
        const Guard queue(queueLock_);
        closed_ = true;
        WakeAllConditionVariable(&changed_);
    }
    if (const HANDLE line = line_) {
        CancelIoEx(line, nullptr);  // a write that is going on
    }
    const Guard line(lineLock_);
    CloseLine();
}

// Whether there is a line; one that was lost is tried again, as it was set up. lineLock_ is held.
bool SerialPort::Ready() {
    {
        const Guard queue(queueLock_);
        if (closed_) {
            return false;
        }
        if (line_ != nullptr && !lost_) {
            return true;
        }
    }
    CloseLine();
    return OpenLine();
}

DWORD WINAPI SerialPort::RunReader(LPVOID port) {
    static_cast<SerialPort*>(port)->Receive();
    return 0;
}

// Waits for a byte, then takes those that have come with it.
void SerialPort::Receive() {
    const HANDLE either[] = {stop_, arrived_};
    BYTE chunk[512];
    DWORD wanted = 1;
    for (;;) {
        OVERLAPPED pending{};
        pending.hEvent = arrived_;
        ResetEvent(arrived_);
        DWORD got = 0;
        bool good = ReadFile(line_, chunk, wanted, nullptr, &pending) || GetLastError() == ERROR_IO_PENDING;
        if (good) {
            if (WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0) {
                CancelIoEx(line_, &pending);
                GetOverlappedResult(line_, &pending, &got, TRUE);
                break;
            }
            good = GetOverlappedResult(line_, &pending, &got, FALSE) && got > 0;
        }
        DWORD errors = 0;
        COMSTAT status{};
        if (!good || !ClearCommError(line_, &errors, &status)) {
            const Guard queue(queueLock_);
            lost_ = true;
            WakeAllConditionVariable(&changed_);
            break;
        }
        if (!Take(chunk, got, (errors & CE_BREAK) != 0)) {
            break;
        }
        wanted = std::clamp<DWORD>(status.cbInQue, 1, sizeof chunk);
    }
}

// Puts bytes into the queue. While it is full they wait, as they would in the driver, unless nobody asks for
// bytes. False when the reader is to end.
bool SerialPort::Take(const BYTE* bytes, DWORD count, bool broke) {
    const Guard queue(queueLock_);
    broke_ = broke_ || broke;
    while (count > 0) {
        const DWORD room = std::min(count, QueueSize - count_);
        for (DWORD i = 0; i < room; ++i) {
            queue_[(first_ + count_++) % QueueSize] = bytes[i];
        }
        bytes += room;
        count -= room;
        lastArrival_ = Milliseconds();
        WakeAllConditionVariable(&changed_);
        if (count > 0) {
            if ((mask_ & EV_RXCHAR) == 0) {
                return true;
            }
            if (WaitForSingleObject(stop_, 0) == WAIT_OBJECT_0) {
                return false;
            }
            SleepConditionVariableSRW(&changed_, &queueLock_, INFINITE, 0);
        }
    }
    WakeAllConditionVariable(&changed_);
    return true;
}

// Sleeps until something has changed or the time has come; queueLock_ is held.
void SerialPort::Wait(std::int64_t until) {
    const DWORD time = until == Never
                           ? INFINITE
                           : static_cast<DWORD>(std::clamp<std::int64_t>(until - Milliseconds(), 0, 60000));
    SleepConditionVariableSRW(&changed_, &queueLock_, time, 0);
}

// When a read that has got nothing new is over: at once, after so long without a byte, or when it has got
// all.
std::int64_t SerialPort::ReadEnd(std::int64_t start) const {
    const DWORD interval = timeouts_.ReadIntervalTimeout;
    if (interval == MAXDWORD) {
        return start;
    }
    return interval != 0 && count_ > 0 ? lastArrival_ + interval : Never;
}

// Whether the line may have bytes that the reader has not brought yet: on a busy machine it is late.
bool SerialPort::ReaderIsLate() {
    if (!TryAcquireSRWLockExclusive(&lineLock_)) {
        return true;
    }
    DWORD errors = 0;
    COMSTAT status{};
    // In this order: what leaves the driver's queue has arrived.
    const bool late = line_ != nullptr && ((ClearCommError(line_, &errors, &status) && status.cbInQue > 0) ||
                                           WaitForSingleObject(arrived_, 0) == WAIT_OBJECT_0);
    ReleaseSRWLockExclusive(&lineLock_);
    const Guard queue(queueLock_);
    broke_ = broke_ || (errors & CE_BREAK) != 0;
    return late;
}

BOOL SerialPort::Read(BYTE* buffer, DWORD size, DWORD& read) {
    read = 0;
    const std::int64_t start = Milliseconds();
    const DWORD wanted = std::min(size, QueueSize - 1);
    AcquireSRWLockExclusive(&queueLock_);
    const unsigned aborted = readsAborted_;
    bool over = false;
    while (!over && count_ < wanted && !closed_ && !lost_ && aborted == readsAborted_) {
        const std::int64_t end = ReadEnd(start);
        if (Milliseconds() < end) {
            Wait(end);
            continue;
        }
        ReleaseSRWLockExclusive(&queueLock_);
        const bool late = ReaderIsLate();
        AcquireSRWLockExclusive(&queueLock_);
        if (late) {
            Wait(Milliseconds() + 1);
        } else {
            over = Milliseconds() >= ReadEnd(start);
        }
    }
    const bool good = !closed_ && aborted == readsAborted_ && (!lost_ || count_ > 0);
    for (; good && read < size && count_ > 0; --count_) {
        buffer[read++] = queue_[first_];
        first_ = (first_ + 1) % QueueSize;
    }
    WakeAllConditionVariable(&changed_);
    ReleaseSRWLockExclusive(&queueLock_);
    return good;
}

BOOL SerialPort::Write(const BYTE* bytes, DWORD size, DWORD& written) {
    written = 0;
    const Guard line(lineLock_);
    if (!Ready()) {
        return FALSE;
    }
    COMMTIMEOUTS timeouts;
    GetTimeouts(timeouts);
    // The time-out is there for a line that has stopped; a slow line gets the time it needs.
    const DWORD constant = timeouts.WriteTotalTimeoutConstant, needed = LineTime(state_.BaudRate, size);
    const DWORD wait = constant == 0 ? INFINITE : constant + needed;
    sentBy_ = std::max(sentBy_, Milliseconds()) + needed;
    OVERLAPPED pending{};
    pending.hEvent = wrote_;
    if (!WriteFile(line_, bytes, size, nullptr, &pending) && GetLastError() != ERROR_IO_PENDING) {
        return FALSE;
    }
    if (WaitForSingleObject(wrote_, wait) != WAIT_OBJECT_0) {
        CancelIoEx(line_, &pending);
    }
    GetOverlappedResult(line_, &pending, &written, TRUE);
    return written > 0 || size == 0;
}

BOOL SerialPort::SetQueues(DWORD input, DWORD output) {
    const Guard line(lineLock_);
    return Ready() && SetupComm(line_, input, output);
}

BOOL SerialPort::GetState(DCB& state) {
    const Guard line(lineLock_);
    state = state_;
    return Ready();
}

BOOL SerialPort::SetState(const DCB& state) {
    const Guard line(lineLock_);
    if (!Ready()) {
        return FALSE;
    }
    const bool dropsRts =
        state_.fRtsControl != RTS_CONTROL_DISABLE && state.fRtsControl == RTS_CONTROL_DISABLE;
    if (dropsRts || state.BaudRate != state_.BaudRate) {
        // The reader must get the last bit as it got the first.
        if (const std::int64_t left = sentBy_ - Milliseconds(); left > 0) {
            Sleep(static_cast<DWORD>(left));
        }
    }
    DCB wanted = state;
    if (!SetCommState(line_, &wanted)) {
        return FALSE;
    }
    state_ = state;
    return TRUE;
}

BOOL SerialPort::GetTimeouts(COMMTIMEOUTS& timeouts) {
    const Guard queue(queueLock_);
    timeouts = timeouts_;
    return !closed_;
}

BOOL SerialPort::SetTimeouts(const COMMTIMEOUTS& timeouts) {
    if (timeouts.ReadTotalTimeoutMultiplier != 0 || timeouts.ReadTotalTimeoutConstant != 0 ||
        timeouts.WriteTotalTimeoutMultiplier != 0) {
        return FALSE;
    }
    const Guard queue(queueLock_);
    timeouts_ = timeouts;
    WakeAllConditionVariable(&changed_);
    return !closed_;
}

BOOL SerialPort::Purge(DWORD flags) {
    const Guard line(lineLock_);
    if (!Ready()) {
        return FALSE;
    }
    // The reader's own read goes on: only what it has brought is cleared.
    PurgeComm(line_, flags & ~DWORD{PURGE_RXABORT});
    const Guard queue(queueLock_);
    if (flags & PURGE_RXABORT) {
        ++readsAborted_;
    }
    if (flags & PURGE_RXCLEAR) {
        count_ = 0;
    }
    WakeAllConditionVariable(&changed_);
    return TRUE;
}

BOOL SerialPort::SetMask(DWORD mask) {
    const Guard queue(queueLock_);
    mask_ = mask;
    broke_ = false;
    ++masksSet_;
    WakeAllConditionVariable(&changed_);
    return !closed_;
}

BOOL SerialPort::WaitEvent(DWORD& events) {
    events = 0;
    {
        const Guard queue(queueLock_);
        const unsigned masksSet = masksSet_;
        std::int64_t until = Never;
        for (;;) {
            if (closed_) {
                return FALSE;
            }
            if (masksSet_ != masksSet) {
                return TRUE;
            }
            if (broke_ && (mask_ & EV_BREAK) != 0) {
                events |= EV_BREAK;
                broke_ = false;
            }
            if (count_ > 0 && (mask_ & EV_RXCHAR) != 0) {
                events |= EV_RXCHAR;
            }
            if (events != 0) {
                return TRUE;
            }
            if (lost_ && until == Never) {
                until = Milliseconds() + UnpluggedPause;
            }
            if (lost_ && Milliseconds() >= until) {
                break;
            }
            Wait(until);
        }
    }
    // The next wait is on the line that is back.
    const Guard line(lineLock_);
    return Ready();
}

BOOL SerialPort::ClearError(DWORD& errors, COMSTAT& status) {
    const Guard line(lineLock_);
    status = {};
    errors = 0;
    if (!Ready()) {
        return FALSE;
    }
    ClearCommError(line_, &errors, &status);
    const Guard queue(queueLock_);
    broke_ = broke_ || (errors & CE_BREAK) != 0;
    status.cbInQue += count_;
    return TRUE;
}

BOOL SerialPort::SetBreak(bool on) {
    const Guard line(lineLock_);
    return Ready() && (on ? SetCommBreak(line_) : ClearCommBreak(line_));
}

}  // namespace layer
