// A name's number comes from a hash of the name, so that programs agree without asking each other. Where two
// names meet on one number the later one takes the next that is free; the file `messages` in the folder of
// windows says who took which, a line for each: the number in hexadecimal, a blank, the name.
#include "platform/linux/windows/other_programs.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <vector>

#include "platform/linux/kernel/posix.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

constexpr std::size_t LongestName = 255;

struct Registration {
    UINT Number;
    std::u16string Name;
};
// Of entries that contradict each other the first counts. Letter case does not matter in names.
using Registrations = std::vector<Registration>;

struct Registry {
    std::mutex Mutex;
    Registrations Known;  // of this program
};

Registry& Registered() {
    static auto* registry = new Registry;
    return *registry;
}

UINT NumberIn(const Registrations& known, std::u16string_view name) {
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&](const Registration& entry) { return SameClass(entry.Name, name); });
    return found != known.end() ? found->Number : 0;
}

std::u16string NameIn(const Registrations& known, UINT number) {
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&](const Registration& entry) { return entry.Number == number; });
    return found != known.end() ? found->Name : std::u16string();
}

// FNV-1a over the name.
UINT Hash(std::u16string_view name) {
    std::uint32_t hash = 2166136261u;
    for (char16_t character : name) {
        character = LowerCase(character);
        hash = (hash ^ (character & 0xFFu)) * 16777619u;
        hash = (hash ^ (character >> 8)) * 16777619u;
    }
    return FirstRegistered + (hash ^ (hash >> 16)) % (LastRegistered - FirstRegistered + 1);
}

std::string FileName() {
    return WindowsFolder() + "/messages";
}

Registrations ReadFile() {
    Registrations known;
    std::ifstream file(FileName());
    std::string line;
    while (std::getline(file, line)) {
        unsigned number = 0;
        int used = 0;
        if (std::sscanf(line.c_str(), "%4x %n", &number, &used) != 1 || used == 0 ||
            number < FirstRegistered || number > LastRegistered) {
            continue;
        }
        const std::u16string name = FromUtf8(std::string_view(line).substr(static_cast<std::size_t>(used)));
        if (!name.empty() && NumberIn(known, name) == 0 && NameIn(known, number).empty()) {
            known.push_back({number, name});
        }
    }
    return known;
}

UINT AgreeOnNumber(const Registrations& own, const std::u16string& name) {
    // Programs that add a name take turns; one that is stopped in the middle of it stops the others for a
    // while only.
    const Descriptor turn(open((WindowsFolder() + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    LockFile(turn.Number(), LOCK_EX, std::chrono::seconds(5));
    const Registrations agreed = ReadFile();
    if (const UINT known = NumberIn(agreed, name); known != 0) {
        return known;
    }
    UINT number = Hash(name);
    while (!NameIn(agreed, number).empty() || !NameIn(own, number).empty()) {
        number = number == LastRegistered ? FirstRegistered : number + 1;
        if (number == Hash(name)) {
            return 0;
        }
    }
    char text[16];
    std::snprintf(text, sizeof text, "%04X ", number);
    // Where the file cannot be written the hash alone must do.
    std::ofstream(FileName(), std::ios::app) << text + ToUtf8(name) + "\n";
    return number;
}

}  // namespace

UINT RegisteredNumber(std::u16string_view name) {
    Registry& registry = Registered();
    std::scoped_lock lock(registry.Mutex);
    return NumberIn(registry.Known, name);
}

std::u16string RegisteredName(UINT number) {
    Registry& registry = Registered();
    std::scoped_lock lock(registry.Mutex);
    return NameIn(registry.Known, number);
}

void ForgetRegisteredMessages() {
    Registry& registry = Registered();
    std::scoped_lock lock(registry.Mutex);
    registry.Known.clear();
}

}  // namespace layer

UINT RegisterWindowMessageW(LPCWSTR name) {
    layer::ParkAtEnd();
    const std::u16string wanted = name != nullptr ? name : u"";
    if (wanted.empty() || wanted.size() > layer::LongestName ||
        wanted.find_first_of(u"\r\n") != std::u16string::npos) {
        return 0;
    }
    layer::Registry& registry = layer::Registered();
    std::scoped_lock lock(registry.Mutex);
    if (const UINT number = layer::NumberIn(registry.Known, wanted); number != 0) {
        return number;
    }
    const UINT number = layer::AgreeOnNumber(registry.Known, wanted);
    if (number != 0) {
        registry.Known.push_back({number, wanted});
    }
    return number;
}
