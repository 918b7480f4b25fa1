// The serial calls, by handle.
#include <map>
#include <utility>

#include "platform/win32/serial_port.h"
#include "platform/win32/wrapped.h"

namespace layer {

namespace {

SRWLOCK PortsLock = SRWLOCK_INIT;
std::map<HANDLE, std::shared_ptr<SerialPort>> Ports;  // under the lock
// Handles of ports are no handles of the platform's, and none comes twice: a call that is late finds nothing.
std::uintptr_t LastHandle = 0x40000000;

}  // namespace

bool IsPortName(LPCWSTR name) {
    return name != nullptr && lstrlenW(name) == 5 &&
           CompareStringOrdinal(name, 3, L"COM", 3, TRUE) == CSTR_EQUAL && name[3] >= L'1' &&
           name[3] <= L'9' && name[4] == L':';
}

HANDLE OpenPort(LPCWSTR name) {
    const std::wstring port = std::wstring(L"COM") + name[3];
    std::wstring device = Variable((L"VANTREL_" + port).c_str());
    if (device.empty()) {
        device = port;
    }
    if (device.find(L'\\') == device.npos) {
        device = L"\\\\.\\" + device;
    }
    auto opened = std::make_shared<SerialPort>(device);
    if (!opened->Open()) {
        return INVALID_HANDLE_VALUE;
    }
    const Guard guard(PortsLock);
    LastHandle += 4;
    const HANDLE handle = reinterpret_cast<HANDLE>(LastHandle);
    Ports[handle] = std::move(opened);
    return handle;
}

std::shared_ptr<SerialPort> FindPort(HANDLE handle) {
    const Guard guard(PortsLock);
    const auto entry = Ports.find(handle);
    return entry != Ports.end() ? entry->second : nullptr;
}

std::shared_ptr<SerialPort> TakePort(HANDLE handle) {
    const Guard guard(PortsLock);
    const auto entry = Ports.extract(handle);
    return entry.empty() ? nullptr : entry.mapped();
}

}  // namespace layer

namespace {

template <class Call>
BOOL OnPort(HANDLE handle, Call call) {
    const auto port = layer::FindPort(handle);
    if (port == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return call(*port);
}

using Port = layer::SerialPort;

}  // namespace

BOOL WINAPI TerminalSetupComm(HANDLE port, DWORD input, DWORD output) {
    return OnPort(port, [=](Port& found) { return found.SetQueues(input, output); });
}
BOOL WINAPI TerminalGetCommState(HANDLE port, LPDCB state) {
    return OnPort(port, [=](Port& found) { return found.GetState(*state); });
}
BOOL WINAPI TerminalSetCommState(HANDLE port, LPDCB state) {
    return OnPort(port, [=](Port& found) { return found.SetState(*state); });
}
BOOL WINAPI TerminalGetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
    return OnPort(port, [=](Port& found) { return found.GetTimeouts(*timeouts); });
}
BOOL WINAPI TerminalSetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
    return OnPort(port, [=](Port& found) { return found.SetTimeouts(*timeouts); });
}
BOOL WINAPI TerminalPurgeComm(HANDLE port, DWORD flags) {
    return OnPort(port, [=](Port& found) { return found.Purge(flags); });
}
BOOL WINAPI TerminalSetCommMask(HANDLE port, DWORD mask) {
    return OnPort(port, [=](Port& found) { return found.SetMask(mask); });
}
BOOL WINAPI TerminalWaitCommEvent(HANDLE port, LPDWORD events, LPOVERLAPPED) {
    return OnPort(port, [=](Port& found) { return found.WaitEvent(*events); });
}
BOOL WINAPI TerminalClearCommError(HANDLE port, LPDWORD errors, LPCOMSTAT status) {
    return OnPort(port, [=](Port& found) { return found.ClearError(*errors, *status); });
}
BOOL WINAPI TerminalSetCommBreak(HANDLE port) {
    return OnPort(port, [](Port& found) { return found.SetBreak(true); });
}
BOOL WINAPI TerminalClearCommBreak(HANDLE port) {
    return OnPort(port, [](Port& found) { return found.SetBreak(false); });
}
