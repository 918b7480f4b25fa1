#include "platform/linux/kernel/shared_names.h"

#include <fcntl.h>
#include <mqueue.h>
#include <semaphore.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

constexpr std::size_t MaxFile = 16 * 1024;
constexpr std::size_t MaxName = 64;

std::string_view Word(SharedKind kind) {
    return kind == SharedKind::Event ? "event " : "queue ";
}

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

// Calls `use` with the kind and the host's name on every line that this terminal could have written; the file
// may hold anything.
template <class Use>
void ForEachName(std::string_view content, std::string_view prefix, Use use) {
    while (!content.empty()) {
        const std::size_t end = content.find('\n');
        if (end == std::string_view::npos) {
            return;
        }
        const std::string_view line = content.substr(0, end);
        content.remove_prefix(end + 1);
        for (const SharedKind kind : {SharedKind::Event, SharedKind::Queue}) {
            const std::string_view word = Word(kind);
            if (!line.starts_with(word)) {
                continue;
            }
            const std::string_view name = line.substr(word.size());
            if (name.starts_with(prefix) && name.size() <= prefix.size() + MaxName &&
                name.find('/', 1) == std::string_view::npos && name.find('\0') == std::string_view::npos) {
                use(kind, name);
            }
        }
    }
}

// With the exclusive lock held.
void TakeNamesAway(int file, const std::string& prefix) {
    ForEachName(ReadWhole(file), prefix, [](SharedKind kind, std::string_view name) {
        const std::string host(name);
        if (kind == SharedKind::Event) {
            sem_unlink(host.c_str());
        } else {
            mq_unlink(host.c_str());
        }
    });
    if (ftruncate(file, 0) != 0) {
        return;  // the lines stay; taking the same names away again does no harm
    }
}

struct Membership {
    std::mutex Mutex;
    std::weak_ptr<SharedNames> Names;
    bool EndRegistered = false;
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

std::string SharedNames::Enter(SharedKind kind, LPCWSTR name) {
    std::string host = prefix_;
    std::size_t length = 0;
    for (; name[length] != 0; ++length) {
        if (length == MaxName || !Usable(name[length])) {
            return {};
        }
        host.push_back(static_cast<char>(name[length]));
    }
    if (length == 0) {
        return {};
    }
    std::scoped_lock lock(mutex_);
    if (!file_) {
        return {};
    }
    const std::string content = ReadWhole(file_.Number());
    bool known = false;
    ForEachName(content, prefix_, [&](SharedKind knownKind, std::string_view knownName) {
        known = known || (knownKind == kind && knownName == host);
    });
    if (!known) {
        std::string line(content.empty() || content.back() == '\n' ? "" : "\n");
        line.append(Word(kind)).append(host).append("\n");
        if (content.size() + line.size() > MaxFile ||
            write(file_.Number(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            return {};
        }
    }
    return host;
}

void SharedNames::Leave() {
    std::scoped_lock lock(mutex_);
    if (!file_) {
        return;
    }
    // Asking for more gives the shared lock up first, so of two that leave together at least one gets it.
    if (LockFile(file_.Number(), LOCK_EX)) {
        TakeNamesAway(file_.Number(), prefix_);
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
        return nullptr;
    }
    if (LockFile(file.Number(), LOCK_EX)) {
        TakeNamesAway(file.Number(), prefix);
    }
    // The exclusive lock is held by others for a few calls only; a program that was stopped in the middle of
    // them must not stop this one. A file system without locks: do without.
    if (!LockFile(file.Number(), LOCK_SH, std::chrono::seconds(1)) && errno == EWOULDBLOCK) {
        return nullptr;
    }
    names = std::make_shared<SharedNames>(std::move(file), prefix);
    mine.Names = names;
    if (!mine.EndRegistered) {
        mine.EndRegistered = true;
        AtEnd([] {
            Membership& ending = Mine();
            std::shared_ptr<SharedNames> left;
            {
                std::scoped_lock endingLock(ending.Mutex);
                left = ending.Names.lock();
                ending.EndRegistered = false;
            }
            if (left != nullptr) {
                left->Leave();
            }
        });
    }
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
