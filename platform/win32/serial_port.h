// One serial port: an overlapped handle, a thread that reads it into a queue, and calls that look at the
// queue alone. No call needs another one's end, and closing wakes whoever waits.
#pragma once

#include <memory>
#include <string>

#include "platform/win32/terminal.h"

namespace layer {

class SerialPort {
  public:
    explicit SerialPort(std::wstring device);
    ~SerialPort();
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    // False, with the platform's last error, when the device cannot be opened.
    bool Open();
    // The device is free for others when this returns.
    void Close();

    BOOL Read(void* buffer, DWORD size, DWORD& read);
    BOOL Write(const void* bytes, DWORD size, DWORD& written);
    BOOL GetState(DCB& state);
    BOOL SetState(DCB state);
    BOOL GetTimeouts(COMMTIMEOUTS& timeouts);
    // Read interval and write constant; the others must be 0.
    BOOL SetTimeouts(const COMMTIMEOUTS& timeouts);
    BOOL Purge(DWORD flags);
    BOOL SetMask(DWORD mask);
    BOOL WaitEvent(DWORD& events);
    BOOL ClearError(DWORD& errors, COMSTAT& status);
    BOOL SetBreak(bool on);

  private:
    static DWORD WINAPI RunReader(LPVOID port);
    // All these with the lock held.
    void Receive();
    void Take(std::string_view bytes);
    bool OpenLine();
    void CloseLine();
    bool Ready();
    bool Check(DWORD& errors, COMSTAT& status);
    bool ReaderIsLate();
    void Wait(std::int64_t until);

    const std::wstring device_;
    const HANDLE wrote_;
    const HANDLE arrived_;  // set from a byte's arrival to the reader's next read

    SRWLOCK lock_ = SRWLOCK_INIT;  // guards all that follows
    CONDITION_VARIABLE changed_ = CONDITION_VARIABLE_INIT;
    HANDLE line_ = nullptr;  // null while unplugged, and once closed; stays while the two next say so
    bool live_ = false;      // the reader runs
    bool writing_ = false;
    bool closed_ = false;
    HANDLE reader_ = nullptr;
    DCB state_{};
    std::int64_t sentBy_ = 0;  // when the last bit of what was written will have left
    std::string queue_;
    std::int64_t lastArrival_ = 0;
    bool broke_ = false;
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
