// One serial port: an overlapped handle, a thread that reads it into a queue, and calls that look at the
// queue alone. No call needs another one's end, and closing wakes whoever waits.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "platform/win32/terminal.h"

namespace layer {

class SerialPort {
  public:
    explicit SerialPort(std::wstring device) : device_(std::move(device)) {}
    ~SerialPort() { Close(); }
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    // False, with the platform's last error, when the device cannot be opened.
    bool Open();
    void Close();

    BOOL Read(BYTE* buffer, DWORD size, DWORD& read);
    BOOL Write(const BYTE* bytes, DWORD size, DWORD& written);
    BOOL SetQueues(DWORD input, DWORD output);
    BOOL GetState(DCB& state);
    BOOL SetState(const DCB& state);
    BOOL GetTimeouts(COMMTIMEOUTS& timeouts);
    // Read interval and write constant; the others must be 0.
    BOOL SetTimeouts(const COMMTIMEOUTS& timeouts);
    BOOL Purge(DWORD flags);
    BOOL SetMask(DWORD mask);
    BOOL WaitEvent(DWORD& events);
    BOOL ClearError(DWORD& errors, COMSTAT& status);
    BOOL SetBreak(bool on);

  private:
    static constexpr DWORD QueueSize = 4096 + 512;  // a full read fits, and what a chunk may add

    static DWORD WINAPI RunReader(LPVOID port);
    void Receive();
    bool Take(const BYTE* bytes, DWORD count, bool broke);
    bool OpenLine();
    void CloseLine();
    bool Ready();
    bool ReaderIsLate();
    std::int64_t ReadEnd(std::int64_t start) const;
    void Wait(std::int64_t until);

    const std::wstring device_;

    // Guards the line against being closed under a call; taken before queueLock_.
    SRWLOCK lineLock_ = SRWLOCK_INIT;
    HANDLE line_ = nullptr;  // null while unplugged, and once closed
    HANDLE reader_ = nullptr;
    HANDLE stop_ = nullptr;  // set when the reader is to end
    HANDLE wrote_ = nullptr;
    HANDLE arrived_ = nullptr;  // set from a byte's arrival to the reader's next read
    DCB state_{};
    std::int64_t sentBy_ = 0;  // when the last bit of what was written will have left

    SRWLOCK queueLock_ = SRWLOCK_INIT;
    CONDITION_VARIABLE changed_ = CONDITION_VARIABLE_INIT;
    std::array<BYTE, QueueSize> queue_{};
    DWORD first_ = 0, count_ = 0;
    std::int64_t lastArrival_ = 0;
    bool broke_ = false, lost_ = false, closed_ = false;
    COMMTIMEOUTS timeouts_{};
    DWORD mask_ = 0;
    unsigned masksSet_ = 0, readsAborted_ = 0;
};

// "COM1:" to "COM9:".
bool IsPortName(LPCWSTR name);
// INVALID_HANDLE_VALUE when it cannot be had.
HANDLE OpenPort(LPCWSTR name);
std::shared_ptr<SerialPort> FindPort(HANDLE handle);
// Takes it out of the table: its handle means nothing any more.
std::shared_ptr<SerialPort> TakePort(HANDLE handle);

}  // namespace layer
