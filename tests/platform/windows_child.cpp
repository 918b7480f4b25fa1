// Another program of the terminal, for the tests of windows: it has a window of this class and title, and
// writes what happens to it, a line each.
#include <cstdio>
#include <string>

#include "platform/linux/kernel/terminal.h"
#include "platform/window.h"

namespace {

UINT Ping;
UINT Leave;

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COPYDATA) {
        const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        const std::string text(static_cast<const char*>(data->lpData), data->cbData);
        std::printf("data %X %s\n", static_cast<unsigned>(data->dwData), text.c_str());
        return 7;
    }
    if (message == Ping || message >= WM_USER) {
        std::printf("message %s %llu %lld\n", message == Ping ? "ping" : std::to_string(message).c_str(),
                    static_cast<unsigned long long>(wParam), static_cast<long long>(lParam));
        if (message == Leave) {
            PostQuitMessage(0);
        }
        return 42;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

int main(int, char** arguments) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    const std::u16string name = layer::FromUtf8(arguments[1]);
    const std::u16string caption = layer::FromUtf8(arguments[2]);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Procedure;
    windowClass.lpszClassName = name.c_str();
    RegisterClassW(&windowClass);
    Ping = RegisterWindowMessageW(TEXT("TEST_PING"));
    Leave = RegisterWindowMessageW(TEXT("TEST_LEAVE"));
    const HWND window = CreateWindowExW(0, name.c_str(), caption.c_str(), 0, 0, 0, 10, 10, nullptr, nullptr,
                                        nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    std::puts("ready");
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) != FALSE) {
        DispatchMessageW(&message);
    }
    std::puts("left");
    return 0;
}
