#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "platform/kernel.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

constexpr DWORD VibratorCode = 0x24321015;

constinit std::mutex VibratorMutex;
bool EndRegistered = false;  // under the mutex

// The file may be a link to the kernel's: such a file is opened, written once and closed, never cut. One that
// would block (a pipe that nobody reads) is left alone.
BOOL WriteState(char state) {
    char path[PATH_MAX];
    const int length = std::snprintf(path, sizeof path, "%s/VIBRATOR", TerminalFolder().c_str());
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
        return FALSE;
    }
    const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
    if (file < 0) {
        return FALSE;
    }
    const bool written = write(file, &state, 1) == 1;
    return close(file) == 0 && written ? TRUE : FALSE;
}

}  // namespace

}  // namespace layer

BOOL KernelIoControl(DWORD code, LPVOID input, DWORD inputSize, LPVOID, DWORD, LPDWORD) {
    layer::ParkAtEnd();
    DWORD value;
    if (code != layer::VibratorCode || inputSize < sizeof value) {
        return FALSE;
    }
    std::memcpy(&value, input, sizeof value);
    std::scoped_lock lock(layer::VibratorMutex);
    // Asked inside the lock: once the end has switched it off, no thread switches it on again.
    if (layer::Ending()) {
        return FALSE;
    }
    if (!layer::EndRegistered) {
        layer::EndRegistered = true;
        layer::AtEnd([] {
            std::scoped_lock endLock(layer::VibratorMutex);
            layer::EndRegistered = false;
            layer::WriteState('0');
        });
    }
    return layer::WriteState(value != 0 ? '1' : '0');
}
