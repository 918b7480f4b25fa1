#include "tools/setup/serial_devices.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "platform/linux/kernel/posix.h"

namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string FirstLine(const fs::path& path) {
    const std::string text = ReadFile(path);
    return text.substr(0, text.find('\n'));
}

dev_t NumberOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) ? status.st_rdev : 0;
}

// A property that the device manager has noted; empty when there is none.
std::string Property(const SerialDevice& device, const std::string& name) {
    const dev_t number = NumberOf(device.Path);
    std::ifstream file("/run/udev/data/c" + std::to_string(major(number)) + ":" +
                       std::to_string(minor(number)));
    const std::string begin = "E:" + name + "=";
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(begin)) {
            return line.substr(begin.size());
        }
    }
    return "";
}

struct Process {
    int Id;
    std::string Name;
    dev_t Terminal;  // that it runs on, or 0
};

std::optional<Process> LookAt(const fs::path& folder) {
    Process process{};
    const std::string id = folder.filename();
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), process.Id);
    if (error != std::errc{} || end != id.data() + id.size()) {
        return std::nullopt;
    }
    // "17 (name) S parent group session terminal ..."; the name may hold anything.
    const std::string text = ReadFile(folder / "stat");
    const std::size_t open = text.find('('), close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos) {
        return std::nullopt;
    }
    process.Name = text.substr(open + 1, close - open - 1);
    unsigned terminal = 0;
    if (std::sscanf(text.c_str() + close + 1, " %*c %*d %*d %*d %u", &terminal) == 1) {
        process.Terminal = static_cast<dev_t>(terminal);
    }
    return process;
}

std::vector<Process> Processes() {
    std::vector<Process> processes;
    for (const std::string& name : layer::NamesIn("/proc")) {
        if (auto process = LookAt("/proc/" + name)) {
            processes.push_back(std::move(*process));
        }
    }
    return processes;
}

bool HasOpen(const Process& process, dev_t device) {
    const std::string files = "/proc/" + std::to_string(process.Id) + "/fd/";
    for (const std::string& name : layer::NamesIn(files)) {
        struct stat status {};
        if (stat((files + name).c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
            status.st_rdev == device) {
            return true;
        }
    }
    return false;
}

std::vector<Process> HoldingProcesses(const SerialDevice& device) {
    const dev_t number = NumberOf(device.Path);
    std::vector<Process> holding;
    for (Process& process : Processes()) {
        const bool runsOnIt = process.Terminal != 0 && process.Terminal == number;
        if (number != 0 && process.Id != getpid() && (runsOnIt || HasOpen(process, number))) {
            holding.push_back(std::move(process));
        }
    }
    return holding;
}

bool Runs(const std::string& name) {
    const std::vector<Process> processes = Processes();
    return std::any_of(processes.begin(), processes.end(),
                       [&](const Process& process) { return process.Name == name; });
}

std::string AccessAdvice(const SerialDevice& device) {
    struct stat status {};
    if (access(device.Path.c_str(), R_OK | W_OK) == 0 || stat(device.Path.c_str(), &status) != 0) {
        return "";
    }
    const group* owner = getgrgid(status.st_gid);
    const passwd* user = getpwuid(getuid());
    if (owner == nullptr || user == nullptr || (status.st_mode & (S_IRGRP | S_IWGRP)) == 0) {
        return "you may not open it";
    }
    return std::string("you may not open it; its group is ") + owner->gr_name + ": sudo adduser " +
           user->pw_name + " " + owner->gr_name + ", then log in again";
}

}  // namespace

std::vector<SerialDevice> FindSerialDevices() {
    std::vector<SerialDevice> devices;
    const fs::path folder = "/sys/class/tty";
    int problem = 0;
    for (const std::string& name : layer::NamesIn(folder, &problem)) {
        // Consoles and pseudo-terminals have no device behind them, and a PC's empty ports no type.
        const std::string type = FirstLine(folder / name / "type");
        const std::string path = "/dev/" + name;
        std::error_code none;
        if (fs::exists(folder / name / "device", none) && type != "0" && NumberOf(path) != 0) {
            devices.push_back(NamedDevice(path));
        }
    }
    if (problem != 0) {
        std::fprintf(stderr, "vantrel-setup: %s: %s\n", folder.c_str(), std::strerror(problem));
    }
    std::sort(devices.begin(), devices.end(), [](const SerialDevice& a, const SerialDevice& b) {
        return a.Path.size() != b.Path.size() ? a.Path.size() < b.Path.size() : a.Path < b.Path;
    });
    return devices;
}

SerialDevice NamedDevice(const std::string& path) {
    SerialDevice device{path, path, ""};
    const fs::path folder = "/dev/serial/by-id";
    for (const std::string& name : layer::NamesIn(folder)) {
        std::error_code none;
        if (fs::equivalent(folder / name, path, none)) {
            device.LastingName = folder / name;
        }
    }
    for (const char* name : {"ID_VENDOR_FROM_DATABASE", "ID_MODEL_FROM_DATABASE"}) {
        const std::string word = Property(device, name);
        device.Description += (device.Description.empty() || word.empty() ? "" : " ") + word;
    }
    return device;
}

std::vector<std::string> Holders(const SerialDevice& device) {
    std::vector<std::string> names;
    for (const Process& process : HoldingProcesses(device)) {
        names.push_back(process.Name + " (process " + std::to_string(process.Id) + ")");
    }
    return names;
}

std::vector<std::string> Advice(const SerialDevice& device) {
    std::vector<std::string> lines;
    if (const std::string line = AccessAdvice(device); !line.empty()) {
        lines.push_back(line);
    }
    const std::string name = fs::path(device.Path).filename();
    for (const Process& process : HoldingProcesses(device)) {
        if (process.Name == "agetty" || process.Name == "login" || process.Name == "getty") {
            lines.push_back("a log-in runs on it: sudo systemctl disable --now serial-getty@" + name);
        } else if (process.Name == "vantrel") {
            lines.push_back("vantrel has it: end it first");
        }
    }
    const std::string vendor = Property(device, "ID_VENDOR_ID"), model = Property(device, "ID_MODEL_ID");
    if (Property(device, "ID_BUS") != "usb" || vendor.empty()) {
        return lines;
    }
    const std::string rule = "ENV{ID_VENDOR_ID}==\"" + vendor + "\", ENV{ID_MODEL_ID}==\"" + model + "\", ";
    const std::string file = " in /etc/udev/rules.d/61-readers.rules, then plug it in again";
    if (Runs("ModemManager") && Property(device, "ID_MM_PORT_IGNORE") != "1") {
        lines.push_back("ModemManager talks to new ports: write " + rule + "ENV{ID_MM_PORT_IGNORE}=\"1\"" +
                        file);
    }
    if (Runs("brltty") && !Property(device, "BRLTTY_BRAILLE_DRIVER").empty()) {
        lines.push_back("brltty takes it for a Braille display: write " + rule +
                        "ENV{BRLTTY_BRAILLE_DRIVER}=\"\"" + file + ", or remove the package brltty");
    }
    return lines;
}
