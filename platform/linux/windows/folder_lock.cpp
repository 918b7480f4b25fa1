#include "platform/linux/windows/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

constexpr std::chrono::milliseconds Step{5};
constexpr int Steps = 1000;

}  // namespace

std::string WindowsFolder() {
    return TerminalFolder() + "/windows";
}

FolderLock::FolderLock()
    : file_(open((WindowsFolder() + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    // Time here is real time on every clock: the other side is another process.
    for (int step = 0; file_ >= 0 && step < Steps; ++step) {
        if (flock(file_, LOCK_EX | LOCK_NB) == 0) {
            held_ = true;
            return;
        }
        std::this_thread::sleep_for(Step);
    }
}

FolderLock::~FolderLock() {
    if (file_ >= 0) {
        close(file_);
    }
}

}  // namespace layer
