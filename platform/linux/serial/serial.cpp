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

std::shared_ptr<SerialPort> PortOf(HANDLE handle) {
    ParkAtEnd();
    return FindObjectAs<SerialPort>(handle);
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
    return layer::PortOf(port) != nullptr;
}

BOOL GetCommState(HANDLE port, DCB* state) {
    const auto found = layer::PortOf(port);
    return found && found->GetState(*state);
}

BOOL SetCommState(HANDLE port, DCB* state) {
    const auto found = layer::PortOf(port);
    return found && found->SetState(*state);
}

BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    const auto found = layer::PortOf(port);
    return found && found->GetTimeouts(*timeouts);
}

BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts) {
    const auto found = layer::PortOf(port);
    return found && found->SetTimeouts(*timeouts);
}

BOOL PurgeComm(HANDLE port, DWORD flags) {
    const auto found = layer::PortOf(port);
    return found && found->Purge(flags);
}

BOOL SetCommMask(HANDLE port, DWORD mask) {
    const auto found = layer::PortOf(port);
    return found && found->SetMask(mask);
}

BOOL WaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED) {
    const auto found = layer::PortOf(port);
    return found && found->WaitEvent(*events);
}

BOOL ClearCommError(HANDLE port, LPDWORD errors, COMSTAT* status) {
    const auto found = layer::PortOf(port);
    return found && found->ClearError(*errors, *status);
}

BOOL SetCommBreak(HANDLE port) {
    const auto found = layer::PortOf(port);
    return found && found->SetBreak(true);
}

BOOL ClearCommBreak(HANDLE port) {
    const auto found = layer::PortOf(port);
    return found && found->SetBreak(false);
}
