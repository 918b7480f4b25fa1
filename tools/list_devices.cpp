// Which input devices there are, and their keys.
#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/linux/kernel/posix.h"
#include "tools/trigger.h"

namespace {

namespace fs = std::filesystem;
constexpr std::size_t LineWidth = 100;

// Names of the device that stay the same when it is plugged in again.
std::vector<std::string> LastingNames(const fs::path& device) {
    std::vector<std::string> names;
    for (const char* folder : {"/dev/input/by-id", "/dev/input/by-path"}) {
        for (const std::string& name : layer::NamesIn(folder)) {
            std::error_code none;
            if (fs::equivalent(fs::path(folder) / name, device, none)) {
                names.push_back(fs::path(folder) / name);
            }
        }
    }
    return names;
}

void PrintKeys(const libevdev* device) {
    std::string line;
    for (unsigned code = 0; code < KEY_CNT; ++code) {
        const char* name = libevdev_has_event_code(device, EV_KEY, code) != 0
                               ? libevdev_event_code_get_name(EV_KEY, code)
                               : nullptr;
        if (name == nullptr) {
            continue;
        }
        if (line.size() + std::strlen(name) > LineWidth) {
            std::printf("   %s\n", line.c_str());
            line.clear();
        }
        line += std::string(" ") + name;
    }
    if (!line.empty()) {
        std::printf("   %s\n", line.c_str());
    }
}

// Whether the device could be opened. One without keys is left out.
bool Print(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    libevdev* device = nullptr;
    if (file < 0 || libevdev_new_from_fd(file, &device) < 0) {
        std::printf("%s: %s\n", path.c_str(), std::strerror(errno));
        if (file >= 0) {
            close(file);
        }
        return false;
    }
    if (libevdev_has_event_type(device, EV_KEY) != 0) {
        std::printf("%s: %s\n", path.c_str(), libevdev_get_name(device));
        for (const std::string& name : LastingNames(path)) {
            std::printf("  %s\n", name.c_str());
        }
        PrintKeys(device);
    }
    libevdev_free(device);
    close(file);
    return true;
}

}  // namespace

int ListDevices() {
    std::vector<fs::path> paths;
    int problem = 0;
    for (const std::string& name : layer::NamesIn("/dev/input", &problem)) {
        if (name.starts_with("event")) {
            paths.push_back("/dev/input/" + name);
        }
    }
    if (problem != 0 && problem != ENOENT) {
        std::fprintf(stderr, "vantrel-trigger: /dev/input: %s\n", std::strerror(problem));
        return 1;
    }
    // event10 behind event9.
    std::sort(paths.begin(), paths.end(), [](const fs::path& left, const fs::path& right) {
        const auto& a = left.native();
        const auto& b = right.native();
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    const auto opened = std::count_if(paths.begin(), paths.end(), Print);
    if (paths.empty()) {
        std::fputs("vantrel-trigger: this machine has no input devices\n", stderr);
    } else if (opened == 0) {
        std::fputs("vantrel-trigger: no input device can be opened; see docs/trigger-keys.md\n", stderr);
    }
    return opened > 0 ? 0 : 1;
}
