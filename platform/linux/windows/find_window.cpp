#include <mutex>
#include <set>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/listener.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/single_instance.h"

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
    std::u16string wantedClass, wantedTitle;
    if (className != nullptr) {
        wantedClass = className;
    }
    if (title != nullptr) {
        wantedTitle = title;
    }
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
