// Where ports come from.
#include <mutex>
#include <utility>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/serial/serial_port.h"

namespace layer {
namespace {

std::mutex openerMutex;
SerialOpener installedOpener;

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

std::shared_ptr<SerialPort> FindPort(HANDLE handle) {
    ParkAtEnd();
    return FindObjectAs<SerialPort>(handle);
}

}  // namespace layer
