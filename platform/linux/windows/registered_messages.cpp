// A name's number comes from a hash of the name, so that programs agree without asking each other. Where two
// names meet on one number the later one takes the next that is free; the file `messages` in the folder of
// windows says who took which, a line for each: the number in hexadecimal, a blank, the name.
#include "platform/linux/windows/registered_messages.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <mutex>
#include <set>

#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/folder_lock.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

constexpr std::size_t LongestName = 255;

using Numbers = std::map<UINT, std::u16string>;

struct Registry {
    std::mutex Mutex;
    Numbers Known;
};

Registry& Registered() {
    static auto* registry = new Registry;
    return *registry;
}

// Letter case does not matter in this table.
std::u16string Lower(std::u16string_view name) {
    std::u16string lower(name);
    for (char16_t& character : lower) {
        character =
            character >= u'A' && character <= u'Z' ? static_cast<char16_t>(character + 32) : character;
    }
    return lower;
}

UINT NumberIn(const Numbers& numbers, std::u16string_view name) {
    for (const auto& [number, known] : numbers) {
        if (SameClass(known, name)) {
            return number;
        }
    }
    return 0;
}

// FNV-1a over the name.
UINT Hash(std::u16string_view name) {
    std::uint32_t hash = 2166136261u;
    for (const char16_t character : Lower(name)) {
        hash = (hash ^ (character & 0xFFu)) * 16777619u;
        hash = (hash ^ (character >> 8)) * 16777619u;
    }
    return FirstRegistered + (hash ^ (hash >> 16)) % (LastRegistered - FirstRegistered + 1);
}

std::string FileName() {
    return WindowsFolder() + "/messages";
}

// What the file says; of lines that contradict each other the first counts.
struct Agreed {
    std::map<std::u16string, UINT> Numbers;  // by the name in lower case
    std::set<UINT> Taken;
};

Agreed ReadFile() {
    Agreed agreed;
    std::ifstream file(FileName());
    std::string line;
    while (agreed.Taken.size() <= LastRegistered - FirstRegistered && std::getline(file, line)) {
        unsigned number = 0;
        int used = 0;
        if (std::sscanf(line.c_str(), "%4x %n", &number, &used) != 1 || used == 0 ||
            number < FirstRegistered || number > LastRegistered) {
            continue;
        }
        const std::u16string name =
            Lower(FromUtf8(std::string_view(line).substr(static_cast<std::size_t>(used))));
        if (!name.empty() && name.size() <= LongestName && !agreed.Numbers.contains(name) &&
            agreed.Taken.insert(number).second) {
            agreed.Numbers.emplace(name, number);
        }
    }
    return agreed;
}

UINT FreeNumber(const Agreed& agreed, const Numbers& own, std::u16string_view name) {
    UINT number = Hash(name);
    for (UINT tries = 0; tries <= LastRegistered - FirstRegistered; ++tries) {
        if (!agreed.Taken.contains(number) && !own.contains(number)) {
            return number;
        }
        number = number == LastRegistered ? FirstRegistered : number + 1;
    }
    return 0;
}

UINT AgreeOnNumber(const Numbers& own, const std::u16string& name) {
    const FolderLock lock;
    const Agreed agreed = ReadFile();
    if (const auto known = agreed.Numbers.find(Lower(name)); known != agreed.Numbers.end()) {
        return known->second;
    }
    const UINT number = FreeNumber(agreed, own, name);
    if (number != 0) {
        char text[16];
        std::snprintf(text, sizeof text, "%04X ", number);
        // Where the file cannot be written the hash alone must do.
        std::ofstream(FileName(), std::ios::app) << text + ToUtf8(name) + "\n";
    }
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
    const auto found = registry.Known.find(number);
    return found != registry.Known.end() ? found->second : std::u16string();
}

void ForgetRegisteredMessages() {
    Registry& registry = Registered();
    std::scoped_lock lock(registry.Mutex);
    registry.Known.clear();
}

}  // namespace layer

UINT RegisterWindowMessageW(LPCWSTR name) {
    layer::SuspendPoint();
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
        // Two lines of a damaged file may name one number; the first that this program took stays.
        registry.Known.emplace(number, wanted);
    }
    return number;
}
