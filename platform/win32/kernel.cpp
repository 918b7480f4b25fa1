// Kernel calls that desktop Windows lacks.
#include "platform/kernel.h"

#include <cstring>

#include "platform/win32/terminal.h"

namespace {

constexpr DWORD VibratorCode = 0x24321015;

}  // namespace

BOOL EventModify(HANDLE event, DWORD action) {
    return action == EVENT_SET && SetEvent(event);
}

// The vibrator is a file: `1` while it runs, else `0`.
BOOL KernelIoControl(DWORD code, LPVOID input, DWORD inputSize, LPVOID, DWORD, LPDWORD returned) {
    DWORD value = 0;
    if (code != VibratorCode || input == nullptr || inputSize < sizeof value) {
        return FALSE;
    }
    std::memcpy(&value, input, sizeof value);
    if (returned != nullptr) {
        *returned = 0;
    }
    const HANDLE file =
        CreateFileW((layer::TerminalFolder() + L"\\VIBRATOR").c_str(), GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    DWORD written = 0;
    const BOOL done = WriteFile(file, value != 0 ? "1" : "0", 1, &written, nullptr);
    return CloseHandle(file) && done;
}
