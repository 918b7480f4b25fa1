#include "link/serial_ports.h"

#include "shell/shell_state.h"

namespace {

constexpr DWORD QueueSize = 4096;
constexpr int WriteTries = 3;
constexpr DWORD BarcodeWriteTimeout = 200;
constexpr DWORD OtherWriteTimeout = 10;
constexpr DWORD RtsLead = 100;  // the reader wakes up by RTS and needs this long before it listens
constexpr DWORD RtsTail = 50;   // the last bytes are still on their way when a write returns

Relaxed<DWORD> Failures;

BOOL Counted(BOOL done) {
    if (!done) {
        Failures.Add(1);
    }
    return done;
}

// Changes the line state field by field: what the driver has set up otherwise stays.
template <class Change>
BOOL ChangeLine(HANDLE port, Change change) {
    DCB state{};
    state.DCBlength = sizeof state;
    if (!Counted(GetCommState(port, &state))) {
        return FALSE;
    }
    change(state);
    return Counted(SetCommState(port, &state));
}

}  // namespace

DWORD PortFailures() {
    return Failures;
}

HANDLE OpenReaderPort(DWORD selector) {
    LPCWSTR name = selector == BarcodePortSelector ? TEXT("COM1:") : TEXT("COM2:");
    HANDLE port = CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    SetPortTimeouts(port, MAXDWORD);
    SetupComm(port, QueueSize, QueueSize);
    return port;
}

BOOL SetPortLine(HANDLE port, DWORD rate) {
    return ChangeLine(port, [rate](DCB& state) {
        if (rate != 0) {
            state.BaudRate = rate;
        }
        state.ByteSize = 8;
        state.Parity = NOPARITY;
        state.StopBits = ONESTOPBIT;
        state.fDtrControl = DTR_CONTROL_DISABLE;
        state.fRtsControl = RTS_CONTROL_DISABLE;
    });
}

BOOL SetPortRate(HANDLE port, DWORD rate) {
    return ChangeLine(port, [rate](DCB& state) { state.BaudRate = rate; });
}

DWORD PortRate(HANDLE port) {
    DCB state{};
    state.DCBlength = sizeof state;
    return GetCommState(port, &state) ? state.BaudRate : 0;
}

BOOL SetPortTimeouts(HANDLE port, DWORD interval) {
    COMMTIMEOUTS timeouts{};
    if (!GetCommTimeouts(port, &timeouts)) {
        return FALSE;
    }
    timeouts.ReadIntervalTimeout = interval;
    timeouts.ReadTotalTimeoutMultiplier = 0;
    timeouts.ReadTotalTimeoutConstant = 0;
    timeouts.WriteTotalTimeoutMultiplier = 0;
    timeouts.WriteTotalTimeoutConstant =
        port == ShellState.BarcodePort ? BarcodeWriteTimeout : OtherWriteTimeout;
    return SetCommTimeouts(port, &timeouts);
}

void SetRts(HANDLE port, bool on) {
    if (!on) {
        Sleep(RtsTail);
    }
    ChangeLine(port, [on](DCB& state) {
        state.fDtrControl = DTR_CONTROL_DISABLE;
        state.fRtsControl = on ? RTS_CONTROL_ENABLE : RTS_CONTROL_DISABLE;
    });
    if (on) {
        Sleep(RtsLead);
    }
}

BOOL RaiseRts(HANDLE port) {
    return ChangeLine(port, [](DCB& state) { state.fRtsControl = RTS_CONTROL_ENABLE; });
}

BOOL CloseReaderPort(Relaxed<HANDLE>& port) {
    const HANDLE open = port;
    if (open == nullptr) {
        return FALSE;
    }
    // Before the close, which wakes the thread: it must find that it is to end.
    (open == ShellState.BarcodePort ? ShellState.BarcodeThreadRun : ShellState.RfidThreadRun) = 0;
    const HANDLE taken = port.Exchange(nullptr);
    return taken == nullptr ? FALSE : CloseHandle(taken);
}

void PurgePort(HANDLE port) {
    PurgeComm(port, PURGE_TXCLEAR | PURGE_RXCLEAR);
}

DWORD ReadPort(HANDLE port, BYTE* buffer, DWORD size) {
    DWORD read = 0;
    if (!Counted(ReadFile(port, buffer, size, &read, nullptr))) {
        return 0;
    }
    return read <= size ? read : size;
}

bool WritePort(HANDLE port, const BYTE* bytes, DWORD size) {
    DWORD written = 0;
    return Counted(WriteFile(port, bytes, size, &written, nullptr)) && written > 0;
}

bool WriteWithRetries(HANDLE port, const BYTE* bytes, DWORD size) {
    for (int i = 0; i < WriteTries; ++i) {
        if (WritePort(port, bytes, size)) {
            return true;
        }
    }
    return false;
}
