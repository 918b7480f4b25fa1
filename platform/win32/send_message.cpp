// Messages to other programs: a broadcast reaches all that answer, and nobody can hold it up.
#include <algorithm>
#include <vector>

#include "platform/win32/sheet.h"
#include "platform/win32/terminal.h"

namespace {

constexpr UINT LongestBroadcast = 5000;  // ms, all windows together
constexpr UINT LongestAnswer = 1000;     // ms, one window
constexpr UINT SignOfLife = 10;          // ms

SRWLOCK SilentLock = SRWLOCK_INIT;
std::vector<HWND> Silent;  // windows that have not answered; under the lock

BOOL CALLBACK AddWindow(HWND window, LPARAM windows) {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

bool IsSilent(HWND window) {
    const layer::Guard guard(SilentLock);
    return std::find(Silent.begin(), Silent.end(), window) != Silent.end();
}

void SetSilent(HWND window, bool silent) {
    const layer::Guard guard(SilentLock);
    std::erase_if(Silent, [=](HWND known) { return known == window || !IsWindow(known); });
    if (silent) {
        Silent.push_back(window);
    }
}

bool Answers(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT milliseconds) {
    DWORD_PTR result = 0;
    SetLastError(ERROR_SUCCESS);
    return SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, milliseconds, &result) !=
               0 ||
           GetLastError() != ERROR_TIMEOUT;
}

void Broadcast(UINT message, WPARAM wParam, LPARAM lParam) {
    std::vector<HWND> windows;
    EnumWindows(AddWindow, reinterpret_cast<LPARAM>(&windows));
    const std::int64_t end = layer::Milliseconds() + LongestBroadcast;
    for (const HWND window : windows) {
        const std::int64_t left = end - layer::Milliseconds();
        if (left <= 0) {
            return;
        }
        // One that did not answer is left out until it does.
        if (IsSilent(window) && !Answers(window, WM_NULL, 0, 0, SignOfLife)) {
            continue;
        }
        const UINT wait = static_cast<UINT>(std::min<std::int64_t>(left, LongestAnswer));
        SetSilent(window, !Answers(window, message, wParam, lParam, wait));
    }
}

}  // namespace

LRESULT WINAPI TerminalSendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (window == HWND_BROADCAST) {
        Broadcast(message, wParam, lParam);
        return 1;
    }
    if (message == PSM_ISDIALOGMESSAGE) {
        return layer::SheetTakes(window, reinterpret_cast<MSG*>(lParam));
    }
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId()) {
        // What the other program is asked to show may come to the front.
        AllowSetForegroundWindow(process);
    }
    return SendMessageW(window, message, wParam, lParam);
}
