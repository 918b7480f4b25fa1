// The platform's serial calls: each finds the port of its handle and hands over.
#include "platform/serial.h"
#ifdef _WIN32
#include "platform/win32/serial_port.h"
#else
#include "platform/linux/serial/serial_port.h"
#endif

namespace {

template <class Work>
BOOL WithPort(HANDLE handle, Work work) {
    const auto port = layer::FindPort(handle);
    return port != nullptr && work(*port);
}

}  // namespace

// The layer's ports have queues of one size.
BOOL WINAPI SetupComm(HANDLE port, DWORD, DWORD) {
    return WithPort(port, [](auto&) { return TRUE; });
}

BOOL WINAPI GetCommState(HANDLE port, DCB* state) {
    return WithPort(port, [=](auto& found) { return found.GetState(*state); });
}

BOOL WINAPI SetCommState(HANDLE port, DCB* state) {
    return WithPort(port, [=](auto& found) { return found.SetState(*state); });
}

BOOL WINAPI GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    return WithPort(port, [=](auto& found) { return found.GetTimeouts(*timeouts); });
}

BOOL WINAPI SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    return WithPort(port, [=](auto& found) { return found.SetTimeouts(*timeouts); });
}

BOOL WINAPI PurgeComm(HANDLE port, DWORD flags) {
    return WithPort(port, [=](auto& found) { return found.Purge(flags); });
}

BOOL WINAPI SetCommMask(HANDLE port, DWORD mask) {
    return WithPort(port, [=](auto& found) { return found.SetMask(mask); });
}

BOOL WINAPI WaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED) {
    return WithPort(port, [=](auto& found) { return found.WaitEvent(*events); });
}

BOOL WINAPI ClearCommError(HANDLE port, LPDWORD errors, COMSTAT* status) {
    return WithPort(port, [=](auto& found) { return found.ClearError(*errors, *status); });
}

BOOL WINAPI SetCommBreak(HANDLE port) {
    return WithPort(port, [](auto& found) { return found.SetBreak(true); });
}

BOOL WINAPI ClearCommBreak(HANDLE port) {
    return WithPort(port, [](auto& found) { return found.SetBreak(false); });
}
