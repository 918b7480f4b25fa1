// Ports by name and by handle.
#include <map>
#include <utility>

#include "platform/win32/serial_port.h"

namespace layer {

namespace {

SRWLOCK PortsLock = SRWLOCK_INIT;
std::map<HANDLE, std::shared_ptr<SerialPort>> Ports;  // under the lock
// Handles of ports are no handles of the platform's, and none comes twice: a call that is late finds nothing.
std::uintptr_t LastHandle = 0x40000000;

}  // namespace

bool IsPortName(LPCWSTR name) {
    return name != nullptr && _wcsnicmp(name, L"COM", 3) == 0 && name[3] >= L'1' && name[3] <= L'9' &&
           name[4] == L':' && name[5] == 0;
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
