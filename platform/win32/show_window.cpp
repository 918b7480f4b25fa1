// A resident program must not take the keyboard from whoever is at work: its windows come up behind the
// focus.
#include "platform/win32/wrapped.h"

HWND WINAPI TerminalCreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x,
                                    int y, int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                                    LPVOID parameter) {
    const HWND window = CreateWindowExW(extendedStyle, className, title, style & ~WS_VISIBLE, x, y, width,
                                        height, parent, menu, instance, parameter);
    if (window != nullptr && (style & WS_VISIBLE) != 0) {
        ShowWindow(window, SW_SHOWNA);
    }
    return window;
}

BOOL WINAPI TerminalShowWindow(HWND window, int command) {
    return ShowWindow(window, command == SW_SHOWNORMAL ? SW_SHOWNOACTIVATE : command);
}
