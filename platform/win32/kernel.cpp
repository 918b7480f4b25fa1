// Shared names of one terminal, kernel calls that desktop Windows lacks, and a program's end.
#include "platform/kernel.h"

#include <cstdio>

#include "platform/program.h"
#include "platform/win32/terminal.h"

#undef CreateEventW
HANDLE WINAPI TerminalCreateEventW(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL initialState,
                                   LPCWSTR name) {
    return CreateEventW(security, manualReset, initialState,
                        name != nullptr ? layer::SharedName(name).c_str() : nullptr);
}

#undef CreateMutexW
HANDLE WINAPI TerminalCreateMutexW(LPSECURITY_ATTRIBUTES security, BOOL initialOwner, LPCWSTR name) {
    return CreateMutexW(security, initialOwner, layer::SharedName(name).c_str());
}

BOOL EventModify(HANDLE event, DWORD action) {
    return action == EVENT_SET && SetEvent(event);
}

// The vibrator is a file: `1` while it runs, else `0`.
BOOL KernelIoControl(DWORD code, LPVOID input, DWORD inputSize, LPVOID, DWORD, LPDWORD) {
    constexpr DWORD vibrator = 0x24321015;
    if (code != vibrator || input == nullptr || inputSize < sizeof(DWORD)) {
        return FALSE;
    }
    const HANDLE file =
        CreateFileW((layer::TerminalFolder() + L"\\VIBRATOR").c_str(), GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    DWORD written = 0;
    const BOOL done = WriteFile(file, *static_cast<DWORD*>(input) != 0 ? "1" : "0", 1, &written, nullptr);
    return TerminalCloseHandle(file) && done;
}

void layer::StartHiddenWindows() {}

void layer::EndOnSignal() {
    SetConsoleCtrlHandler([](DWORD) -> BOOL { EndProgram(0); }, TRUE);
}

void layer::EndProgram(int code) {
    std::fflush(nullptr);
    ExitProcess(static_cast<UINT>(code));
}
