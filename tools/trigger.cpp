// vantrel-trigger: the terminal's trigger keys, as the messages that its key handling sends.
#include <cstdio>
#include <string_view>

#include "platform/window.h"
#include "tools/arguments.h"

namespace {

constexpr const char* Usage = "usage: vantrel-trigger down | up | press MILLISECONDS  [--key 1|2]\n";

enum class Action { None, Down, Up, Press };

struct TriggerOptions {
    Action What = Action::None;
    DWORD Milliseconds = 0;
    DWORD Key = 1;
};

bool ReadOptions(int count, char** arguments, TriggerOptions& options) {
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        const char* value = at + 1 < count ? arguments[at + 1] : "";
        if (argument == "--key" && ReadNumberArgument(value, 2, options.Key) && options.Key != 0) {
            ++at;
        } else if (options.What != Action::None) {
            return false;
        } else if (argument == "down") {
            options.What = Action::Down;
        } else if (argument == "up") {
            options.What = Action::Up;
        } else if (argument == "press" && ReadNumberArgument(value, 3'600'000, options.Milliseconds)) {
            options.What = Action::Press;
            ++at;
        } else {
            return false;
        }
    }
    return options.What != Action::None;
}

// Looked for each time: the system may have been started anew between a press and its release.
bool SendKey(LPCWSTR name) {
    const HWND window = FindWindowW(TEXT("Vantrel"), TEXT("Vantrel v1.29"));
    if (window == nullptr) {
        std::fputs("vantrel-trigger: vantrel does not run on this terminal\n", stderr);
        return false;
    }
    SendMessageW(window, RegisterWindowMessageW(name), 0, 0);
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    TriggerOptions options;
    if (!ReadOptions(count, arguments, options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    const LPCWSTR down = options.Key == 1 ? TEXT("WM_USER1DOWN") : TEXT("WM_USER2DOWN");
    const LPCWSTR up = options.Key == 1 ? TEXT("WM_USER1UP") : TEXT("WM_USER2UP");
    if (options.What != Action::Up && !SendKey(down)) {
        return 1;
    }
    if (options.What == Action::Press) {
        Sleep(options.Milliseconds);
    }
    return options.What == Action::Down || SendKey(up) ? 0 : 1;
}
