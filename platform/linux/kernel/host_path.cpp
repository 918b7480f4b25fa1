#include <dirent.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

bool IsSeparator(char16_t character) {
    return character == u'\\' || character == u'/';
}

// Characters that no file name of the platform has; a colon belongs to devices.
bool IsForbidden(char16_t character) {
    constexpr std::u16string_view odd = u":*?\"<>|";
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < u' ' || character == 0x7F || surrogate || odd.find(character) != odd.npos;
}

char LowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool SameButForCase(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (LowerCase(left[i]) != LowerCase(right[i])) {
            return false;
        }
    }
    return true;
}

// The name under which a component exists in the folder; of several that differ in case the first in byte
// order. The component itself when there is none.
std::string ExistingName(const std::string& folder, const std::string& component) {
    struct stat status {};
    if (lstat((folder + "/" + component).c_str(), &status) == 0) {
        return component;
    }
    std::string found;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
    if (directory != nullptr) {
        while (const dirent* entry = readdir(directory.get())) {
            const std::string name = entry->d_name;
            if (SameButForCase(name, component) && (found.empty() || name < found)) {
                found = name;
            }
        }
    }
    return found.empty() ? component : found;
}

}  // namespace

std::string HostPath(LPCWSTR path) {
    if (path == nullptr) {
        return {};
    }
    std::size_t length = 0;
    while (path[length] != 0) {
        if (++length >= MAX_PATH || (!IsSeparator(path[length - 1]) && IsForbidden(path[length - 1]))) {
            return {};
        }
    }
    std::u16string_view rest(path, length);
    if (rest.empty()) {
        return {};
    }
    // All paths start at the root, with the separator or without.
    if (IsSeparator(rest.front())) {
        rest.remove_prefix(1);
    }
    const std::string& root = TerminalFolder();
    std::string host = root;
    while (!rest.empty()) {
        std::size_t end = 0;
        while (end < rest.size() && !IsSeparator(rest[end])) {
            ++end;
        }
        const std::string component = ToUtf8(rest.substr(0, end));
        rest.remove_prefix(end < rest.size() ? end + 1 : end);
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
