#include "platform/linux/kernel/terminal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/linux/kernel/log.h"

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
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char character : folder) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3u;
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
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

}  // namespace layer
