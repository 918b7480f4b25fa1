#include <pthread.h>

#include <atomic>
#include <vector>

#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

// Until somebody says otherwise, the thread that the program started with.
std::atomic<pthread_t> MainThread{pthread_self()};
std::atomic<bool> EndBegun{false};

struct EndWork {
    std::mutex Mutex;
    std::vector<std::function<void()>> Work;
};

EndWork& Registered() {
    static auto* work = new EndWork;
    return *work;
}

}  // namespace

bool OnMainThread() {
    return pthread_equal(MainThread.load(std::memory_order_relaxed), pthread_self()) != 0;
}

void SetMainThread() {
    MainThread.store(pthread_self(), std::memory_order_relaxed);
}

void AtEnd(std::function<void()> work) {
    EndWork& registered = Registered();
    std::scoped_lock lock(registered.Mutex);
    registered.Work.push_back(std::move(work));
}

void RunEndWork() {
    EndWork& registered = Registered();
    for (;;) {
        std::function<void()> work;
        {
            std::scoped_lock lock(registered.Mutex);
            if (registered.Work.empty()) {
                return;
            }
            work = std::move(registered.Work.back());
            registered.Work.pop_back();
        }
        work();
    }
}

void BeginEnd() {
    EndBegun.store(true);
    RunEndWork();
}

bool Ending() {
    return EndBegun.load(std::memory_order_acquire);
}

}  // namespace layer
