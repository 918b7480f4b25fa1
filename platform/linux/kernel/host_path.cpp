#include <sys/stat.h>

#include <QString>
#include <algorithm>
#include <filesystem>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

constexpr std::u16string_view Separators = u"\\/";

// Characters that no file name of the platform has; a colon belongs to devices.
bool IsForbidden(char16_t character) {
    constexpr std::u16string_view odd = u":*?\"<>|";
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < u' ' || character == 0x7F || surrogate || odd.find(character) != odd.npos;
}

bool SameButForCase(const std::string& left, const char* right) {
    return QString::fromStdString(left).compare(QString::fromUtf8(right), Qt::CaseInsensitive) == 0;
}

// The name under which a component exists in the folder; of several that differ in case the first in byte
// order. The component itself when there is none.
std::string ExistingName(const std::string& folder, const std::string& component) {
    struct stat status {};
    if (lstat((folder + "/" + component).c_str(), &status) == 0) {
        return component;
    }
    std::string found;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        const std::string name = entry.path().filename();
        if (SameButForCase(name, component.c_str()) && (found.empty() || name < found)) {
            found = name;
        }
    }
    return found.empty() ? component : found;
}

}  // namespace

std::string HostPath(LPCWSTR path) {
    std::u16string_view rest(path != nullptr ? path : u"");
    if (rest.empty() || rest.size() >= MAX_PATH || std::any_of(rest.begin(), rest.end(), IsForbidden)) {
        return {};
    }
    // All paths start at the root, with the separator or without.
    rest.remove_prefix(Separators.find(rest.front()) != Separators.npos ? 1 : 0);
    const std::string& root = TerminalFolder();
    std::string host = root;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(Separators), rest.size());
        const std::string component = ToUtf8(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (component.empty() || component == "." || component == "..") {
            return {};
        }
        // The sockets of the programs lie in a folder that differs from the platform's in case alone.
        const bool windows = host.size() == root.size() && SameButForCase(component, "windows");
        const std::string name = windows ? "Windows" : ExistingName(host, component);
        host += "/" + name;
    }
    return host;
}

}  // namespace layer
