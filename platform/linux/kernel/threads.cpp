#include <pthread.h>
#include <unistd.h>

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
