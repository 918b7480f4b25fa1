// Windows among those of others: they come up behind the focus, they are found by their terminal, and nobody
// can hold up a message to all.
#include <algorithm>
#include <set>
#include <vector>

#include "platform/win32/terminal.h"
#include "platform/win32/wrapped.h"

namespace {

constexpr LPCWSTR TerminalProperty = L"VantrelTerminal";
constexpr UINT LongestBroadcast = 5000;  // ms, all windows together; another program's window
constexpr UINT LongestAnswer = 1000;     // ms, one window
constexpr UINT SignOfLife = 10;          // ms

SRWLOCK SilentLock = SRWLOCK_INIT;
std::set<HWND> Silent;  // windows that have not answered; under the lock

HANDLE OwnMark() {
    return reinterpret_cast<HANDLE>(layer::TerminalIdentity());
}

// All but those that belong to another terminal.
BOOL CALLBACK AddWindow(HWND window, LPARAM windows) {
    const HANDLE mark = GetPropW(window, TerminalProperty);
    if (mark == nullptr || mark == OwnMark()) {
        reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    }
    return TRUE;
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
        const auto silent = [=] {
            const layer::Guard guard(SilentLock);
            return Silent.contains(window);
        };
        // One that did not answer is left out until it does.
        if (silent() && !Answers(window, WM_NULL, 0, 0, SignOfLife)) {
            continue;
        }
        const UINT wait = static_cast<UINT>(std::min<std::int64_t>(left, LongestAnswer));
        const bool answered = Answers(window, message, wParam, lParam, wait);
        const layer::Guard guard(SilentLock);
        std::erase_if(Silent, [=](HWND known) { return known == window || !IsWindow(known); });
        if (!answered) {
            Silent.insert(window);
        }
    }
}

}  // namespace

HWND WINAPI TerminalCreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x,
                                    int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                                    LPVOID parameter) {
    const HWND window = CreateWindowExW(extendedStyle, className, title, style & ~WS_VISIBLE, x, y, width,
                                        height, parent, menu, instance, parameter);
    if (window != nullptr && parent == nullptr) {
        SetPropW(window, TerminalProperty, OwnMark());
    }
    if (window != nullptr && (style & WS_VISIBLE) != 0) {
        ShowWindow(window, SW_SHOWNA);
    }
    return window;
}

BOOL WINAPI TerminalShowWindow(HWND window, int command) {
    return ShowWindow(window, command == SW_SHOWNORMAL ? SW_SHOWNOACTIVATE : command);
}

HWND WINAPI TerminalFindWindowW(LPCWSTR className, LPCWSTR title) {
    HWND found = nullptr;
    do {
        found = FindWindowExW(nullptr, found, className, title);
    } while (found != nullptr && GetPropW(found, TerminalProperty) != OwnMark());
    return found;
}

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
    if (process == GetCurrentProcessId()) {
        return SendMessageW(window, message, wParam, lParam);
    }
    // Another program may hang, or show a box over the answer.
    DWORD_PTR result = 0;
    SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, LongestBroadcast, &result);
    return static_cast<LRESULT>(result);
}
