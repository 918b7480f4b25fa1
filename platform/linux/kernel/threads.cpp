#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "platform/kernel.h"
#include "platform/linux/kernel/local_object.h"
#include "platform/linux/kernel/log.h"
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
    const std::unique_ptr<std::shared_ptr<Thread>> held(static_cast<std::shared_ptr<Thread>*>(argument));
    (*held)->Run();
    return nullptr;
}

}  // namespace

void ParkAtEnd() {
    if (Ending() && !OnMainThread()) {
        for (;;) {
            pause();
        }
    }
}

}  // namespace layer

HANDLE CreateThread(LPSECURITY_ATTRIBUTES, std::size_t stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD, LPDWORD threadId) {
    static std::atomic<DWORD> lastId{0};
    layer::ParkAtEnd();
    if (start == nullptr) {
        return nullptr;
    }
    auto thread = std::make_shared<layer::Thread>(start, parameter);
    const HANDLE handle = layer::NewHandle(thread);
    if (handle == nullptr) {
        return nullptr;
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    // What is asked for is a least size: the host's own libraries need more than a small device's do.
    std::size_t usual = 0;
    pthread_attr_getstacksize(&attributes, &usual);
    if (stackSize > usual) {
        pthread_attr_setstacksize(&attributes, stackSize);
    }
    auto* held = new std::shared_ptr<layer::Thread>(std::move(thread));
    pthread_t host;
    const int failed = pthread_create(&host, &attributes, layer::StartThread, held);
    pthread_attr_destroy(&attributes);
    if (failed != 0) {
        layer::Say(LogPriority::Error, "a thread cannot be started: %s", std::strerror(failed));
        delete held;
        layer::ReleaseHandle(handle);
        return nullptr;
    }
    if (threadId != nullptr) {
        *threadId = ++lastId;
    }
    return handle;
}
