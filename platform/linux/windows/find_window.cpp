#include "platform/linux/windows/find_window.h"

#include <fcntl.h>
#include <sys/file.h>

#include <mutex>
#include <set>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/listener.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/program_socket.h"

namespace layer {

namespace {

// Windows that were looked for and not found.
struct Missed {
    std::mutex Mutex;
    std::set<std::pair<std::u16string, std::u16string>> Names;
};

Missed& TheMissed() {
    static auto* missed = new Missed;
    return *missed;
}

}  // namespace

FolderLock::FolderLock()
    : file_(open((WindowsFolder() + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    LockFile(file_.Number(), LOCK_EX, std::chrono::seconds(5));
}

FirstInstance::FirstInstance(const std::u16string& className, const std::u16string& title) {
    Missed& missed = TheMissed();
    bool only;
    {
        std::scoped_lock lock(missed.Mutex);
        only = missed.Names.erase({className, title}) != 0;
    }
    if (only) {
        lock_.emplace();
        granted_ = FindOtherWindow(&className, &title) == nullptr;
    }
    if (granted_) {
        StartListening();
    }
}

}  // namespace layer

HWND FindWindowW(LPCWSTR className, LPCWSTR title) {
    layer::SuspendPoint();
    const std::u16string wantedClass = className != nullptr ? className : u"";
    const std::u16string wantedTitle = title != nullptr ? title : u"";
    const auto* classFilter = className != nullptr ? &wantedClass : nullptr;
    const auto* titleFilter = title != nullptr ? &wantedTitle : nullptr;
    const auto own = layer::OwnTopLevelWindows(classFilter, titleFilter);
    if (!own.empty()) {
        return own.front().Handle;
    }
    HWND other = layer::FindOtherWindow(classFilter, titleFilter);
    if (other == nullptr && className != nullptr && title != nullptr) {
        layer::Missed& missed = layer::TheMissed();
        std::scoped_lock lock(missed.Mutex);
        missed.Names.insert({wantedClass, wantedTitle});
    }
    layer::SuspendPoint();
    return other;
}
