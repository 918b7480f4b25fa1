// vantrel-setup: finds the serial devices and the readers on them, and links COM1 and COM2 of the terminal.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/kernel/terminal.h"
#include "settings/record.h"
#include "tools/setup/find_readers.h"
#include "tools/setup/serial_devices.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* Usage =
    "usage: vantrel-setup [--yes] [--list] [DEVICE...]\n"
    "  finds the readers on the serial devices (all, or those that are named) and links COM1 and COM2\n"
    "  --yes   asks nothing, for scripts\n"
    "  --list  says what there is and what is in the way; touches nothing\n";

struct SetupOptions {
    bool Yes = false;
    bool ListOnly = false;
    std::vector<std::string> Devices;
};

bool ReadOptions(int count, char** arguments, SetupOptions& options) {
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        if (argument == "--yes") {
            options.Yes = true;
        } else if (argument == "--list") {
            options.ListOnly = true;
        } else if (argument.starts_with("-")) {
            return false;
        } else {
            options.Devices.emplace_back(argument);
        }
    }
    return true;
}

// The end of the input is a no.
bool Agreed(const SetupOptions& options, const std::string& question) {
    if (options.Yes) {
        return true;
    }
    std::printf("%s [y/n] ", question.c_str());
    std::fflush(stdout);
    std::string answer;
    return std::getline(std::cin, answer) && (answer == "y" || answer == "yes");
}

void Show(const SerialDevice& device) {
    std::printf("%s", device.Path.c_str());
    if (!device.Description.empty()) {
        std::printf("  %s", device.Description.c_str());
    }
    std::printf("\n");
    if (device.LastingName != device.Path) {
        std::printf("  %s\n", device.LastingName.c_str());
    }
    for (const std::string& holder : Holders(device)) {
        std::printf("  in use by %s\n", holder.c_str());
    }
    for (const std::string& line : Advice(device)) {
        std::printf("  %s\n", line.c_str());
    }
}

// Where the link leads, or empty.
std::string Target(const std::string& link) {
    std::error_code none;
    const fs::path target = fs::read_symlink(link, none);
    return none ? "" : target.string();
}

// Puts a link in place of another at once. False, said, when something else than a link is there.
bool Link(const std::string& name, const std::string& target) {
    const std::string link = layer::TerminalFolder() + "/" + name, fresh = link + ".new";
    std::error_code failed;
    const fs::file_type there = fs::symlink_status(link, failed).type();
    if (there == fs::file_type::not_found || there == fs::file_type::symlink) {
        fs::remove(fresh, failed);
        fs::create_symlink(target, fresh, failed);
        if (!failed) {
            fs::rename(fresh, link, failed);
        }
    } else if (!failed) {
        failed = std::make_error_code(std::errc::file_exists);
    }
    if (failed) {
        std::fprintf(stderr, "vantrel-setup: %s: %s\n", link.c_str(), failed.message().c_str());
        return false;
    }
    std::printf("%s -> %s\n", name.c_str(), target.c_str());
    return true;
}

bool SameDevice(const std::string& one, const std::string& other) {
    std::error_code none;
    const fs::path device = fs::canonical(one, none);
    return !device.empty() && device == fs::canonical(other, none);
}

// Links the port to the reader that was found, or to nothing where there was none, and no link either, or one
// to what has turned out to be the other port's reader.
bool Connect(const SetupOptions& options, const std::string& name, const std::string& reader,
             const std::string& other) {
    const std::string now = Target(layer::TerminalFolder() + "/" + name);
    if (reader.empty() && !now.empty() && !SameDevice(now, other)) {
        std::error_code none;
        const bool there = fs::exists(now, none);
        std::printf("%s stays at %s%s\n", name.c_str(), now.c_str(),
                    there ? "" : ", which is not there now: plug it in, or remove the link");
        return true;
    }
    const std::string target = reader.empty() ? "/dev/null" : reader;
    if (now == target) {
        std::printf("%s -> %s already\n", name.c_str(), target.c_str());
        return true;
    }
    if (!now.empty() && now != "/dev/null" && !Agreed(options, name + " leads to " + now + ". Replace it?")) {
        return true;
    }
    return Link(name, target);
}

int SetUp(const SetupOptions& options, const std::vector<SerialDevice>& devices) {
    if (!Agreed(options,
                "Ask these devices for readers? It takes some seconds, and disturbs what else is there.")) {
        return 1;
    }
    std::vector<std::string> paths;
    for (const SerialDevice& device : devices) {
        paths.push_back(device.Path);
    }
    const std::vector<FoundReader> found = AskDevices(paths);
    std::string barcode, rfid;
    for (std::size_t at = 0; at < devices.size(); ++at) {
        std::printf("%s: %s\n", devices[at].Path.c_str(), Describe(found[at]).c_str());
        std::string& port = (found[at].Device & DeviceBarcodeMask) != 0 ? barcode : rfid;
        if (found[at].Device == 0) {
            continue;
        }
        if (port.empty()) {
            port = devices[at].LastingName;
        } else {
            std::printf("  not used: the terminal has one already; to take this one, name it alone\n");
        }
    }
    if (barcode.empty() && rfid.empty()) {
        std::printf("No reader was found; the links stay as they are.\n");
        return 1;
    }
    const bool linked = Connect(options, "COM1", barcode, rfid);
    return Connect(options, "COM2", rfid, barcode) && linked ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    SetupOptions options;
    if (!ReadOptions(count, arguments, options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    std::vector<SerialDevice> devices;
    for (const std::string& path : options.Devices) {
        devices.push_back(NamedDevice(path));
    }
    if (options.Devices.empty()) {
        devices = FindSerialDevices();
    }
    if (devices.empty()) {
        std::printf("This machine has no serial devices. Plug the reader's adapter in and start again.\n");
        return 1;
    }
    for (const SerialDevice& device : devices) {
        Show(device);
    }
    return options.ListOnly ? 0 : SetUp(options, devices);
}
