#include "platform/win32/serial_port.h"

#include <algorithm>
#include <utility>

namespace layer {

namespace {

constexpr std::int64_t Never = INT64_MAX;
constexpr DWORD DriverQueue = 4096;
constexpr DWORD QueueSize = 4096 + 512;  // a full read fits, and what a chunk may add
// How long a wait on an unplugged port takes before it looks whether the reader is back, and fails.
constexpr DWORD UnpluggedPause = 250;

// Milliseconds that so many bytes need on the line: ten bits each.
DWORD LineTime(DWORD rate, DWORD bytes) {
    return static_cast<DWORD>(std::uint64_t{bytes} * 10 * 1000 / std::max<DWORD>(rate, 300)) + 1;
}

}  // namespace

SerialPort::SerialPort(std::wstring device)
    : device_(std::move(device)),
      wrote_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      arrived_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    queue_.reserve(QueueSize);
}

SerialPort::~SerialPort() {
    Close();
    CloseHandle(wrote_);
    CloseHandle(arrived_);
}

bool SerialPort::Open() {
    const Guard guard(lock_);
    return wrote_ != nullptr && arrived_ != nullptr && OpenLine();
}

// Opens the device, as it was set up before if it was, and starts its reader.
bool SerialPort::OpenLine() {
    const HANDLE line = CreateFileW(device_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OVERLAPPED, nullptr);
    if (line == INVALID_HANDLE_VALUE) {
        return false;
    }
    if (state_.DCBlength == 0) {
        state_.DCBlength = sizeof state_;
        GetCommState(line, &state_);
        // What the driver has been left with by others must not stop the line.
        state_.fBinary = TRUE;
        state_.fOutxCtsFlow = state_.fOutxDsrFlow = state_.fDsrSensitivity = FALSE;
        state_.fOutX = state_.fInX = state_.fNull = state_.fErrorChar = state_.fAbortOnError = FALSE;
    }
    SetupComm(line, DriverQueue, DriverQueue);
    // The line's own time-outs: none. A read of it ends with the bytes that it asks for.
    COMMTIMEOUTS patient{};
    if (SetCommTimeouts(line, &patient) && SetCommState(line, &state_)) {
        line_ = line;
        reader_ = CreateThread(nullptr, 0, RunReader, this, 0, nullptr);
        live_ = reader_ != nullptr;
    }
    if (!live_) {
        line_ = nullptr;
        CloseHandle(line);
    }
    return live_;
}

void SerialPort::CloseLine() {
    if (line_ == nullptr) {
        return;
    }
    CancelIoEx(line_, nullptr);
    while (live_ || writing_) {
        Wait(Never);
    }
    WaitForSingleObject(reader_, INFINITE);
    CloseHandle(reader_);
    CloseHandle(std::exchange(line_, nullptr));
}

void SerialPort::Close() {
    const Guard guard(lock_);
    closed_ = true;
    WakeAllConditionVariable(&changed_);
    CloseLine();
}

// Whether there is a line; one that was lost is tried again.
bool SerialPort::Ready() {
    if (closed_ || live_ || writing_) {
        return !closed_ && live_;
    }
    CloseLine();
    return OpenLine();
}

// What the driver says, and whether it says anything. A break is told once.
bool SerialPort::Check(DWORD& errors, COMSTAT& status) {
    const bool told = ClearCommError(line_, &errors, &status);
    broke_ = broke_ || (told && (errors & CE_BREAK) != 0);
    return told;
}

DWORD WINAPI SerialPort::RunReader(LPVOID port) {
    auto* const own = static_cast<SerialPort*>(port);
    const Guard guard(own->lock_);
    own->Receive();
    own->live_ = false;
    WakeAllConditionVariable(&own->changed_);
    return 0;
}

// Waits for a byte, or takes those that have come, until the line is lost or closed.
void SerialPort::Receive() {
    char chunk[512];
    DWORD errors = 0;
    COMSTAT status{};
    while (!closed_ && Check(errors, status)) {
        WakeAllConditionVariable(&changed_);
        const DWORD wanted = std::clamp<DWORD>(status.cbInQue, 1, sizeof chunk);
        DWORD got = 0;
        OVERLAPPED pending{};
        pending.hEvent = arrived_;
        ResetEvent(arrived_);
        if (!ReadFile(line_, chunk, wanted, nullptr, &pending) && GetLastError() != ERROR_IO_PENDING) {
            return;
        }
        ReleaseSRWLockExclusive(&lock_);
        const bool good = GetOverlappedResult(line_, &pending, &got, TRUE) && got > 0;
        AcquireSRWLockExclusive(&lock_);
        if (!good) {
            return;
        }
        Take({chunk, got});
    }
}

// Puts bytes into the queue. While it is full they wait, as they would in the driver, unless nobody asks for
// bytes.
void SerialPort::Take(std::string_view bytes) {
    for (;;) {
        const std::size_t room = std::min(bytes.size(), QueueSize - queue_.size());
        queue_.append(bytes.substr(0, room));
        bytes.remove_prefix(room);
        lastArrival_ = room > 0 ? Milliseconds() : lastArrival_;
        if (bytes.empty() || closed_ || (mask_ & EV_RXCHAR) == 0) {
            return;
        }
        WakeAllConditionVariable(&changed_);
        Wait(Never);
    }
}

// Sleeps without the lock until something has changed or the time has come.
void SerialPort::Wait(std::int64_t until) {
    const DWORD time = until == Never
                           ? INFINITE
                           : static_cast<DWORD>(std::clamp<std::int64_t>(until - Milliseconds(), 0, 60000));
    SleepConditionVariableSRW(&changed_, &lock_, time, 0);
}

// Whether the line may have bytes that the reader has not brought yet: on a busy machine it is late.
bool SerialPort::ReaderIsLate() {
    DWORD errors = 0;
    COMSTAT status{};
    // In this order: what leaves the driver's queue has arrived.
    return live_ && ((Check(errors, status) && status.cbInQue > 0) ||
                     WaitForSingleObject(arrived_, 0) == WAIT_OBJECT_0);
}

BOOL SerialPort::Read(void* buffer, DWORD size, DWORD& read) {
    read = 0;
    const Guard guard(lock_);
    const std::int64_t start = Milliseconds();
    const DWORD wanted = std::min(size, QueueSize - 1);
    const unsigned aborted = readsAborted_;
    while (queue_.size() < wanted && live_ && aborted == readsAborted_) {
        // It is over at once, after so long without a byte, or when it has got all.
        const DWORD interval = timeouts_.ReadIntervalTimeout;
        const std::int64_t end = interval == MAXDWORD               ? start
                                 : interval != 0 && !queue_.empty() ? lastArrival_ + interval
                                                                    : Never;
        const std::int64_t now = Milliseconds();
        if (now >= end && !ReaderIsLate()) {
            break;
        }
        Wait(std::max(end, now + 1));
    }
    if (closed_ || aborted != readsAborted_) {
        return FALSE;
    }
    read = static_cast<DWORD>(queue_.copy(static_cast<char*>(buffer), size));
    queue_.erase(0, read);
    WakeAllConditionVariable(&changed_);
    return live_ || read > 0;
}

BOOL SerialPort::Write(const void* bytes, DWORD size, DWORD& written) {
    written = 0;
    const Guard guard(lock_);
    while (writing_) {
        Wait(Never);
    }
    if (!Ready()) {
        return FALSE;
    }
    // The time-out is there for a line that has stopped; a slow line gets the time it needs.
    const DWORD constant = timeouts_.WriteTotalTimeoutConstant, needed = LineTime(state_.BaudRate, size);
    sentBy_ = std::max(sentBy_, Milliseconds()) + needed;
    OVERLAPPED pending{};
    pending.hEvent = wrote_;
    if (!WriteFile(line_, bytes, size, nullptr, &pending) && GetLastError() != ERROR_IO_PENDING) {
        return FALSE;
    }
    writing_ = true;
    ReleaseSRWLockExclusive(&lock_);
    if (WaitForSingleObject(wrote_, constant == 0 ? INFINITE : constant + needed) != WAIT_OBJECT_0) {
        CancelIoEx(line_, &pending);
    }
    GetOverlappedResult(line_, &pending, &written, TRUE);
    AcquireSRWLockExclusive(&lock_);
    writing_ = false;
    WakeAllConditionVariable(&changed_);
    return written > 0 || size == 0;
}

BOOL SerialPort::GetState(DCB& state) {
    const Guard guard(lock_);
    state = state_;
    return Ready();
}

BOOL SerialPort::SetState(DCB state) {
    const Guard guard(lock_);
    const bool dropsRts =
        state_.fRtsControl != RTS_CONTROL_DISABLE && state.fRtsControl == RTS_CONTROL_DISABLE;
    // The reader must get the last bit as it got the first.
    while ((dropsRts || state.BaudRate != state_.BaudRate) && Milliseconds() < sentBy_ && !closed_) {
        Wait(sentBy_);
    }
    if (!Ready() || !SetCommState(line_, &state)) {
        return FALSE;
    }
    state_ = state;
    return TRUE;
}

BOOL SerialPort::GetTimeouts(COMMTIMEOUTS& timeouts) {
    const Guard guard(lock_);
    timeouts = timeouts_;
    return !closed_;
}

BOOL SerialPort::SetTimeouts(const COMMTIMEOUTS& timeouts) {
    if (timeouts.ReadTotalTimeoutMultiplier != 0 || timeouts.ReadTotalTimeoutConstant != 0 ||
        timeouts.WriteTotalTimeoutMultiplier != 0) {
        return FALSE;
    }
    const Guard guard(lock_);
    timeouts_ = timeouts;
    WakeAllConditionVariable(&changed_);
    return !closed_;
}

BOOL SerialPort::Purge(DWORD flags) {
    const Guard guard(lock_);
    if (!Ready()) {
        return FALSE;
    }
    // The reader's own read goes on: only what it has brought is cleared.
    PurgeComm(line_, flags & ~DWORD{PURGE_RXABORT});
    readsAborted_ += (flags & PURGE_RXABORT) != 0 ? 1 : 0;
    if ((flags & PURGE_RXCLEAR) != 0) {
        queue_.clear();
    }
    WakeAllConditionVariable(&changed_);
    return TRUE;
}

BOOL SerialPort::SetMask(DWORD mask) {
    const Guard guard(lock_);
    mask_ = mask;
    broke_ = false;
    ++masksSet_;
    WakeAllConditionVariable(&changed_);
    return !closed_;
}

BOOL SerialPort::WaitEvent(DWORD& events) {
    events = 0;
    const Guard guard(lock_);
    const unsigned masksSet = masksSet_;
    std::int64_t until = Never;
    while (!closed_ && masksSet_ == masksSet) {
        events = (broke_ ? mask_ & EV_BREAK : 0) | (queue_.empty() ? 0 : mask_ & EV_RXCHAR);
        if (events != 0) {
            broke_ = broke_ && (events & EV_BREAK) == 0;
            return TRUE;
        }
        if (!live_ && Milliseconds() >= until) {
            return Ready();  // the next wait is on the line that is back
        }
        until = live_ ? Never : std::min<std::int64_t>(until, Milliseconds() + UnpluggedPause);
        Wait(until);
    }
    return !closed_;
}

BOOL SerialPort::ClearError(DWORD& errors, COMSTAT& status) {
    const Guard guard(lock_);
    status = {};
    errors = 0;
    if (!Ready()) {
        return FALSE;
    }
    Check(errors, status);
    status.cbInQue += static_cast<DWORD>(queue_.size());
    return TRUE;
}

BOOL SerialPort::SetBreak(bool on) {
    const Guard guard(lock_);
    return Ready() && (on ? SetCommBreak(line_) : ClearCommBreak(line_));
}

}  // namespace layer
