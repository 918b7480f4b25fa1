#include "platform/linux/kernel/terminal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QString>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/posix.h"
#include "platform/linux/resources/embedded.h"
#include "platform/terminal_names.h"

namespace layer {

namespace {

struct Terminal {
    std::string Folder, Identity;
};

struct Terminals {
    std::mutex Mutex;
    // The one in use is the last; earlier ones of a test stay, because references to them are out.
    std::vector<std::unique_ptr<Terminal>> All;
};

Terminals& Known() {
    static auto* terminals = new Terminals;
    return *terminals;
}

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string ChosenFolder() {
    const std::string chosen = Variable("VANTREL_TERMINAL");
    if (!chosen.empty()) {
        return chosen;
    }
    std::string data = Variable("XDG_DATA_HOME");
    // The base directory convention ignores relative values.
    if (data.empty() || data.front() != '/') {
        data = QDir::homePath().toStdString() + "/.local/share";
    }
    return data + "/vantrel/terminal";
}

void MakeFolders(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), 0700);
        if (end == std::string::npos) {
            return;
        }
    }
}

bool IsFolder(const std::string& path) {
    return QFileInfo(QString::fromStdString(path)).isDir();
}

std::string Identify(const std::string& folder) {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx",
                  static_cast<unsigned long long>(IdentityOf(folder.data(), folder.size())));
    return digits;
}

bool WriteSounds(const std::string& folder) {
    for (const EmbeddedSound& sound : EmbeddedSounds()) {
        std::ofstream file(folder + "/" + std::string(sound.FileName), std::ios::binary);
        file.write(reinterpret_cast<const char*>(sound.Bytes.data()),
                   static_cast<std::streamsize>(sound.Bytes.size()));
        file.close();
        if (!file) {
            return false;
        }
    }
    return true;
}

// Lays out a new terminal folder's Windows/ with the read sounds; false when it cannot be written. That
// folder gets its name only when it is complete, so that one who comes at the same time, or after a power
// failure, finds all of it or none.
bool InstallSounds(const std::string& folder) {
    const std::string finished = folder + "/Windows";
    const std::string unfinished = finished + "." + std::to_string(getpid());
    RemoveLeftovers(folder, "Windows.");
    std::error_code ignored;
    std::filesystem::remove_all(unfinished, ignored);
    const bool written = mkdir(unfinished.c_str(), 0700) == 0 && WriteSounds(unfinished) &&
                         std::rename(unfinished.c_str(), finished.c_str()) == 0;
    std::filesystem::remove_all(unfinished, ignored);
    // Another program may have been quicker.
    return written || std::filesystem::is_directory(finished, ignored);
}

std::unique_ptr<Terminal> OpenTerminal(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    MakeFolders(folder);
    // From here on the real path counts: a later change of the working folder or of a link on the way must
    // not move the terminal.
    char real[PATH_MAX];
    if (realpath(folder.c_str(), real) != nullptr) {
        folder = real;
    }
    if (IsFolder(folder)) {
        mkdir((folder + "/DiskOnChip").c_str(), 0700);
        mkdir((folder + "/windows").c_str(), 0700);
        if (!IsFolder(folder + "/Windows") && !InstallSounds(folder)) {
            Say(LogPriority::Warning, "the read sounds cannot be written into %s", folder.c_str());
        }
    } else {
        Say(LogPriority::Error, "the terminal folder %s cannot be made", folder.c_str());
    }
    const std::string identity = Identify(folder);
    return std::make_unique<Terminal>(Terminal{std::move(folder), identity});
}

const Terminal& CurrentTerminal() {
    Terminals& known = Known();
    std::scoped_lock lock(known.Mutex);
    if (known.All.empty()) {
        known.All.push_back(OpenTerminal(ChosenFolder()));
    }
    return *known.All.back();
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
    for (const std::string& name : NamesIn(folder)) {
        if (SameButForCase(name, component.c_str()) && (found.empty() || name < found)) {
            found = name;
        }
    }
    return found.empty() ? component : found;
}

}  // namespace

const std::string& TerminalFolder() {
    return CurrentTerminal().Folder;
}

const std::string& TerminalIdentity() {
    return CurrentTerminal().Identity;
}

std::string ToUtf8(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size())).toStdString();
}

std::u16string FromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toStdU16String();
}

void UseTerminalFolder(std::string folder) {
    Terminals& known = Known();
    std::scoped_lock lock(known.Mutex);
    known.All.push_back(OpenTerminal(std::move(folder)));
}

std::string HostPath(LPCWSTR path) {
    std::vector<std::u16string_view> names;
    if (!SplitPath(path, names)) {
        return {};
    }
    const std::string& root = TerminalFolder();
    std::string host = root;
    for (const std::u16string_view name : names) {
        const std::string component = ToUtf8(name);
        // The sockets of the programs lie in a folder that differs from the platform's in case alone.
        const bool windows = host.size() == root.size() && SameButForCase(component, "windows");
        host += "/" + (windows ? "Windows" : ExistingName(host, component));
    }
    return host;
}

}  // namespace layer
