#include "platform/linux/kernel/shared_names.h"

#include <fcntl.h>
#include <mqueue.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <string_view>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

constexpr std::size_t MaxFile = 16 * 1024;
constexpr std::size_t MaxName = 64;

bool Usable(char16_t character) {
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z') ||
           (character >= u'0' && character <= u'9') || character == u'.' || character == u'_' ||
           character == u'-';
}

std::string ReadWhole(int file) {
    std::string content(MaxFile, '\0');
    const ssize_t size = pread(file, content.data(), content.size(), 0);
    content.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return content;
}

// With the exclusive lock held. The file may hold anything: what this terminal could not have written is
// passed over.
void TakeNamesAway(int file, const std::string& prefix) {
    std::istringstream lines(ReadWhole(file));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        const std::string name = line.substr(std::min(blank, line.size() - 1) + 1);
        if (!name.starts_with(prefix) || name.find('/', 1) != std::string::npos) {
            continue;
        }
        line.starts_with(EventKind) ? sem_unlink(name.c_str()) : mq_unlink(name.c_str());
    }
    // Where the lines stay, taking the same names away again does no harm.
    [[maybe_unused]] const int cut = ftruncate(file, 0);
}

struct Membership {
    std::mutex Mutex;
    std::weak_ptr<SharedNames> Names;
};

Membership& Mine() {
    static auto* membership = new Membership;
    return *membership;
}

}  // namespace

SharedNames::SharedNames(Descriptor file, std::string prefix)
    : file_(std::move(file)), prefix_(std::move(prefix)) {}

SharedNames::~SharedNames() {
    Leave();
}

std::string SharedNames::Enter(const char* kind, LPCWSTR name) {
    const std::u16string_view wide(name);
    std::scoped_lock lock(mutex_);
    if (!file_ || wide.empty() || wide.size() > MaxName || !std::all_of(wide.begin(), wide.end(), Usable)) {
        return {};
    }
    const std::string host = prefix_ + std::string(wide.begin(), wide.end());
    const std::string content = "\n" + ReadWhole(file_.Number());
    const std::string line = std::string("\n") + kind + " " + host + "\n";
    if (content.find(line) != std::string::npos) {
        return host;
    }
    const std::string_view added = std::string_view(line).substr(content.ends_with('\n') ? 1 : 0);
    const bool written =
        content.size() + line.size() <= MaxFile &&
        write(file_.Number(), added.data(), added.size()) == static_cast<ssize_t>(added.size());
    return written ? host : std::string();
}

void SharedNames::Leave() {
    std::scoped_lock lock(mutex_);
    if (!file_) {
        return;
    }
    // Asking for more gives the shared lock up first, so of two that leave together at least one gets it.
    if (LockFile(file_.Number(), LOCK_EX)) {
        TakeNamesAway(file_.Number(), prefix_);
    } else if (errno != EWOULDBLOCK) {
        Say(LogPriority::Warning, "shared names stay until the next start: %s", std::strerror(errno));
    }
    file_.Close();
}

std::shared_ptr<SharedNames> JoinSharedNames() {
    Membership& mine = Mine();
    const std::string prefix = "/vantrel-" + TerminalIdentity() + "-";
    std::scoped_lock lock(mine.Mutex);
    std::shared_ptr<SharedNames> names = mine.Names.lock();
    if (names != nullptr && names->Prefix() == prefix) {
        return names;
    }
    const std::string path = TerminalFolder() + "/shared-objects";
    Descriptor file(
        open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW, 0600));
    struct stat status {};
    if (!file || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        Say(LogPriority::Error, "%s cannot be used: %s", path.c_str(), std::strerror(file ? EINVAL : errno));
        return nullptr;
    }
    if (LockFile(file.Number(), LOCK_EX)) {
        TakeNamesAway(file.Number(), prefix);
    }
    // The exclusive lock is held by others for a few calls only; a program that was stopped in the middle of
    // them must not stop this one. A file system without locks: do without.
    if (!LockFile(file.Number(), LOCK_SH, std::chrono::seconds(1)) && errno == EWOULDBLOCK) {
        Say(LogPriority::Error, "%s stays locked", path.c_str());
        return nullptr;
    }
    names = std::make_shared<SharedNames>(std::move(file), prefix);
    mine.Names = names;
    AtEnd([left = mine.Names] {
        if (const auto held = left.lock()) {
            held->Leave();
        }
    });
    return names;
}

bool IsOursAlone(const struct stat& status, const char* kind, const std::string& name) {
    const bool ours = status.st_uid == geteuid() && (status.st_mode & 0077) == 0;
    if (!ours) {
        Say(LogPriority::Error, "%s %s belongs to another user or is open to others; it is not used", kind,
            name.c_str());
    }
    return ours;
}

}  // namespace layer
