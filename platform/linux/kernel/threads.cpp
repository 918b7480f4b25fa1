// Threads, the process, and the end of both.
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/kernel.h"
#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/object.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

class Thread : public LocalObject {
  public:
    Thread(LPTHREAD_START_ROUTINE start, LPVOID parameter) : start_(start), parameter_(parameter) {}

    void Run() {
        start_(parameter_);
        std::scoped_lock lock(mutex_);
        ended_ = true;
        changed_.notify_all();
    }

  private:
    bool Ready() const override { return ended_; }
    void Take() override {}

    const LPTHREAD_START_ROUTINE start_;
    const LPVOID parameter_;
    bool ended_ = false;
};

void* StartThread(void* argument) {
    const CrashStack stack;
    const std::unique_ptr<std::shared_ptr<Thread>> held(static_cast<std::shared_ptr<Thread>*>(argument));
    prctl(PR_SET_TIMERSLACK,
          1UL);  // else each wait is 50 us longer, and a scan has three behind its last byte
    (*held)->Run();
    return nullptr;
}

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

void ParkAtEnd() {
    if (Ending() && !OnMainThread()) {
        for (;;) {
            pause();
        }
    }
}

std::thread StartHostThread(std::function<void()> work) {
    try {
        return std::thread([work = std::move(work)] {
            const CrashStack stack;
            work();
        });
    } catch (const std::system_error&) {
        return {};
    }
}

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

HANDLE CreateThread(LPSECURITY_ATTRIBUTES, std::size_t, LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD,
                    LPDWORD) {
    layer::ParkAtEnd();
    if (start == nullptr) {
        return nullptr;
    }
    auto thread = std::make_shared<layer::Thread>(start, parameter);
    const HANDLE handle = layer::NewHandle(thread);
    auto* held = new std::shared_ptr<layer::Thread>(std::move(thread));
    pthread_t host;
    if (const int failed = pthread_create(&host, nullptr, layer::StartThread, held); failed != 0) {
        layer::Say(LogPriority::Error, "a thread cannot be started: %s", std::strerror(failed));
        delete held;
        layer::ReleaseHandle(handle);
        return nullptr;
    }
    pthread_detach(host);
    return handle;
}

HANDLE GetCurrentProcess() {
    return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-1));
}

BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel, FILETIME* user) {
    if (process != GetCurrentProcess()) {
        return FALSE;
    }
    *exit = *kernel = *user = {};
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text);
    // The 20th field behind the name, which ends with the last bracket, counts clock ticks since the
    // machine's start.
    std::size_t at = text.rfind(')');
    for (int field = 0; field < 20 && at != std::string::npos; ++field) {
        at = text.find(' ', at + 1);
    }
    if (at == std::string::npos) {
        return FALSE;
    }
    const std::uint64_t ticks = std::strtoull(text.c_str() + at, nullptr, 10);
    const std::uint64_t time = ticks * (10'000'000u / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK)));
    *creation = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    return TRUE;
}
