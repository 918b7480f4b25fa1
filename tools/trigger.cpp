// vantrel-trigger: the terminal's trigger keys, as the messages that its key handling sends.
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "platform/kernel.h"
#include "platform/window.h"
#include "tools/arguments.h"
#include "tools/trigger.h"

namespace {

constexpr const char* Usage =
    "usage: vantrel-trigger down | up | press MILLISECONDS  [--key 1|2]\n"
    "       vantrel-trigger --device PATH... --key KEY_NAME[=1|2]... [--grab]\n"
    "       vantrel-trigger --list\n";

enum class Action { None, Down, Up, Press, List };

struct TriggerOptions {
    Action What = Action::None;
    DWORD Milliseconds = 0;
    DWORD Key = 1;
};

// The words of a watch over devices; false when they are none.
bool ReadDeviceOptions(int count, char** arguments, DeviceOptions& options) {
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        BoundKey key{};
        if (argument == "--grab") {
            options.Grab = true;
        } else if (argument == "--device" && at + 1 < count) {
            options.Devices.emplace_back(arguments[++at]);
        } else if (argument == "--key" && at + 1 < count && ReadBoundKey(arguments[at + 1], key)) {
            options.Keys.push_back(key);
            ++at;
        } else {
            return false;
        }
    }
    return !options.Devices.empty() && !options.Keys.empty();
}

bool ReadOptions(int count, char** arguments, TriggerOptions& options) {
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        const char* value = at + 1 < count ? arguments[at + 1] : "";
        if (argument == "--list" && count == 2) {
            options.What = Action::List;
        } else if (argument == "--key" && ReadNumberArgument(value, 2, options.Key) && options.Key != 0) {
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

// When the key was pressed or released, as far as this program knows: when it was started itself, in
// milliseconds, and never 0. A program that was started later may be the first to get through.
DWORD KeyTime() {
    FILETIME creation = {}, exit, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &creation, &exit, &kernel, &user);
    const std::uint64_t time = std::uint64_t{creation.dwHighDateTime} << 32 | creation.dwLowDateTime;
    return static_cast<DWORD>(time / 10'000) | 1u;
}

}  // namespace

// Looked for each time: the system may have been started anew between a press and its release. One that hung
// over the press is not found, and gets the release all the same.
bool SendTrigger(DWORD key, bool down, DWORD time) {
    constexpr LPCWSTR Names[2][2] = {{TEXT("WM_USER1UP"), TEXT("WM_USER1DOWN")},
                                     {TEXT("WM_USER2UP"), TEXT("WM_USER2DOWN")}};
    static HWND pressed = nullptr;
    HWND window = FindWindowW(TEXT("Vantrel"), TEXT("Vantrel v1.29"));
    if (window == nullptr && !down) {
        window = pressed;
    }
    pressed = down ? window : nullptr;
    if (window == nullptr) {
        std::fputs("vantrel-trigger: vantrel does not run on this terminal\n", stderr);
        return false;
    }
    SendMessageW(window, RegisterWindowMessageW(Names[key - 1][down]), time, 0);
    return true;
}

int main(int count, char** arguments) {
    DeviceOptions devices;
    if (ReadDeviceOptions(count, arguments, devices)) {
        return WatchDevices(devices);
    }
    TriggerOptions options;
    if (!ReadOptions(count, arguments, options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    if (options.What == Action::List) {
        return ListDevices();
    }
    const DWORD time = KeyTime();
    if (options.What != Action::Up && !SendTrigger(options.Key, true, time)) {
        return 1;
    }
    if (options.What == Action::Press) {
        Sleep(options.Milliseconds);
    }
    return options.What == Action::Down || SendTrigger(options.Key, false, time + options.Milliseconds) ? 0
                                                                                                        : 1;
}
