// The platform's serial calls: each finds the port of its handle and hands over.
#include "platform/serial.h"

#include <mutex>
#include <utility>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/serial/serial_port.h"

namespace layer {
namespace {

std::mutex openerMutex;
SerialOpener installedOpener;

template <class Work>
BOOL WithPort(HANDLE handle, Work work) {
    ParkAtEnd();
    const auto port = FindObjectAs<SerialPort>(handle);
    return port && work(*port);
}

}  // namespace

std::shared_ptr<SerialPort> OpenSerialPort(const std::string& name) {
    SerialOpener opener;
    {
        std::lock_guard lock(openerMutex);
        opener = installedOpener;
    }
    return opener ? opener(name) : OpenTty(name);
}

void InstallSerialOpener(SerialOpener opener) {
    std::lock_guard lock(openerMutex);
    installedOpener = std::move(opener);
}

}  // namespace layer

BOOL SetupComm(HANDLE port, DWORD, DWORD) {
    return layer::WithPort(port, [](auto&) { return TRUE; });
}

BOOL GetCommState(HANDLE port, DCB* state) {
    return layer::WithPort(port, [&](auto& found) { return found.GetState(*state); });
}

BOOL SetCommState(HANDLE port, DCB* state) {
    return layer::WithPort(port, [&](auto& found) { return found.SetState(*state); });
}

BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    return layer::WithPort(port, [&](auto& found) { return found.GetTimeouts(*timeouts); });
}

BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    return layer::WithPort(port, [&](auto& found) { return found.SetTimeouts(*timeouts); });
}

BOOL PurgeComm(HANDLE port, DWORD flags) {
    return layer::WithPort(port, [&](auto& found) { return found.Purge(flags); });
}

BOOL SetCommMask(HANDLE port, DWORD mask) {
    return layer::WithPort(port, [&](auto& found) { return found.SetMask(mask); });
}

BOOL WaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED) {
    return layer::WithPort(port, [&](auto& found) { return found.WaitEvent(*events); });
}

BOOL ClearCommError(HANDLE port, LPDWORD errors, COMSTAT* status) {
    return layer::WithPort(port, [&](auto& found) { return found.ClearError(*errors, *status); });
}

BOOL SetCommBreak(HANDLE port) {
    return layer::WithPort(port, [&](auto& found) { return found.SetBreak(true); });
}

BOOL ClearCommBreak(HANDLE port) {
    return layer::WithPort(port, [&](auto& found) { return found.SetBreak(false); });
}
