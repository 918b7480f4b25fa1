// Another program of the terminal, for the tests of windows: it does what its first argument says and writes
// what happens, a line each.
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

int Serve(const char* className, const char* title) {
    const std::u16string name = layer::FromUtf8(className);
    const std::u16string caption = layer::FromUtf8(title);
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

int Register(int count, char** names) {
    for (int i = 0; i < count; ++i) {
        std::printf("%X\n", RegisterWindowMessageW(layer::FromUtf8(names[i]).c_str()));
    }
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    if (count >= 4 && std::strcmp(arguments[1], "serve") == 0) {
        return Serve(arguments[2], arguments[3]);
    }
    if (count >= 3 && std::strcmp(arguments[1], "register") == 0) {
        return Register(count - 2, arguments + 2);
    }
    return 2;
}
