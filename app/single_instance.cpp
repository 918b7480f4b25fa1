#include "app/single_instance.h"

#include "platform/window.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD LongestEnd = 5000;  // milliseconds
constexpr DWORD LookAgain = 50;

// Tells a running instance to show its settings. An ending one is not found any more, perhaps only from now
// on.
bool HandOver() {
    HWND running = FindWindowW(WindowClassName, WindowTitle);
    if (!running) {
        return false;
    }
    AllowSetForegroundWindow(ASFW_ANY);
    SendMessageW(running, WM_OPENSETTINGS, 0, 0);
    return FindWindowW(WindowClassName, WindowTitle) != nullptr;
}

}  // namespace

bool BecomeOnlyInstance() {
    // Held until the process ends, whatever ends it: who gets it finds the ports free.
    HANDLE mutex = CreateMutexW(nullptr, FALSE, WindowClassName);
    if (!mutex) {
        Log(LogPriority::Warning, TEXT("another start at this instant would not be noticed"));
    }
    const DWORD start = GetTickCount();
    do {
        if (HandOver()) {
            return false;
        }
        const DWORD got = WaitForSingleObject(mutex, LookAgain);
        if (got == WAIT_OBJECT_0 || got == WAIT_ABANDONED) {
            return true;
        }
        if (got == WAIT_FAILED) {
            Sleep(LookAgain);
        }
    } while (GetTickCount() - start < LongestEnd);
    return true;
}
