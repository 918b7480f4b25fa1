#include "platform/linux/kernel/posix.h"

#include <dirent.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <thread>

namespace layer {

void Descriptor::Close() {
    if (number_ >= 0) {
        close(std::exchange(number_, -1));
    }
}

bool LockFile(int file, int kind, std::chrono::milliseconds longest) {
    constexpr std::chrono::milliseconds step{2};
    const auto until = std::chrono::steady_clock::now() + longest;
    while (flock(file, kind | LOCK_NB) != 0) {
        if (errno != EINTR && (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= until)) {
            return false;
        }
        const int reason = errno;
        std::this_thread::sleep_for(step);
        errno = reason;
    }
    return true;
}

// A folder that fails half-way is no exception here, as it is to std::filesystem's loop.
std::vector<std::string> NamesIn(const std::string& folder, int* problem) {
    std::vector<std::string> names;
    const auto next = [](DIR* open) {
        errno = 0;  // readdir leaves it alone at the end
        return readdir(open);
    };
    const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.c_str()), closedir);
    while (const dirent* entry = open ? next(open.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    if (problem != nullptr) {
        *problem = errno;
    }
    return names;
}

void RemoveLeftovers(const std::string& folder, std::string_view beginning) {
    for (const std::string& name : NamesIn(folder)) {
        pid_t owner = 0;
        const bool named =
            name.starts_with(beginning) &&
            std::from_chars(name.data() + beginning.size(), name.data() + name.size(), owner).ec ==
                std::errc();
        if (named && owner > 0 && kill(owner, 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            std::filesystem::remove_all(folder + "/" + name, ignored);
        }
    }
}

Waker::Waker() : bell_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void Waker::Wake() const {
    // A counter that is full is readable already.
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(bell_.Number(), &one, sizeof one);
}

void Waker::Clear() const {
    std::uint64_t count;
    [[maybe_unused]] const auto taken = read(bell_.Number(), &count, sizeof count);
}

}  // namespace layer
