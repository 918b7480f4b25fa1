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

constexpr DWORD SuspendFailed = 0xFFFFFFFFu;
constexpr DWORD MaxSuspendCount = 127;

class Thread : public LocalObject {
  public:
    Thread(LPTHREAD_START_ROUTINE start, LPVOID parameter, bool suspended)
        : start_(start), parameter_(parameter), suspend_count_(suspended ? 1 : 0) {
        park_requested_.store(suspended, std::memory_order_relaxed);
    }

    void Run();

    DWORD Suspend();
    DWORD Resume();

    bool ParkRequested() const { return park_requested_.load(std::memory_order_acquire); }
    void Park();
    std::unique_lock<std::mutex> LockParking() { return std::unique_lock(parking_mutex_); }

    // Returns the wake-up that was set before.
    std::function<void()>* SetWake(std::function<void()>* wake);

  private:
    bool Ready() const override { return ended_; }
    void Take() override {}
    void CallWake();

    const LPTHREAD_START_ROUTINE start_;
    const LPVOID parameter_;
    bool ended_ = false;

    std::mutex parking_mutex_;
    std::condition_variable resumed_;
    DWORD suspend_count_;
    bool over_ = false;
    std::atomic<bool> park_requested_;

    // Its own lock, because a wake-up takes locks under which the thread may be asking for parking_mutex_.
    std::mutex wake_mutex_;
    std::function<void()>* wake_ = nullptr;
};

thread_local Thread* Current = nullptr;
thread_local int Deferred = 0;

void Thread::Run() {
    Current = this;
    SuspendPoint();
    start_(parameter_);
    Current = nullptr;
    {
        std::scoped_lock lock(parking_mutex_);
        over_ = true;
    }
    std::scoped_lock lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

DWORD Thread::Suspend() {
    DWORD previous;
    {
        std::scoped_lock lock(parking_mutex_);
        if (over_ || suspend_count_ >= MaxSuspendCount) {
            return SuspendFailed;
        }
        previous = suspend_count_++;
        park_requested_.store(true, std::memory_order_release);
    }
    CallWake();
    return previous;
}

DWORD Thread::Resume() {
    std::scoped_lock lock(parking_mutex_);
    const DWORD previous = suspend_count_;
    if (previous > 0 && --suspend_count_ == 0) {
        park_requested_.store(false, std::memory_order_release);
        resumed_.notify_all();
    }
    return previous;
}

void Thread::Park() {
    std::unique_lock lock(parking_mutex_);
    resumed_.wait(lock, [this] { return suspend_count_ == 0; });
}

std::function<void()>* Thread::SetWake(std::function<void()>* wake) {
    std::function<void()>* outer;
    {
        std::scoped_lock lock(wake_mutex_);
        outer = wake_;
        wake_ = wake;
    }
    if (wake != nullptr && ParkRequested()) {
        CallWake();
    }
    return outer;
}

void Thread::CallWake() {
    std::scoped_lock lock(wake_mutex_);
    if (wake_ != nullptr) {
        (*wake_)();
    }
}

void* StartThread(void* argument) {
    const std::unique_ptr<std::shared_ptr<Thread>> held(static_cast<std::shared_ptr<Thread>*>(argument));
    (*held)->Run();
    return nullptr;
}

bool MustStayParked() {
    return Ending() && !OnMainThread();
}

}  // namespace

void SuspendPoint() {
    if (Deferred > 0) {
        return;
    }
    if (Current != nullptr && Current->ParkRequested()) {
        Current->Park();
    }
    if (MustStayParked()) {
        for (;;) {
            pause();
        }
    }
}

bool ParkRequested() {
    return Deferred == 0 && ((Current != nullptr && Current->ParkRequested()) || MustStayParked());
}

void DeferParking() {
    ++Deferred;
}

void AllowParking() {
    --Deferred;
}

Taking::Taking() {
    if (Current != nullptr) {
        lock_ = Current->LockParking();
    }
    granted_ = !ParkRequested();
}

WakeOnPark::WakeOnPark(std::function<void()> wake) : wake_(std::move(wake)) {
    if (Current != nullptr) {
        outer_ = Current->SetWake(&wake_);
    }
}

WakeOnPark::~WakeOnPark() {
    if (Current != nullptr) {
        Current->SetWake(outer_);
    }
}

}  // namespace layer

HANDLE CreateThread(LPSECURITY_ATTRIBUTES, std::size_t stackSize, LPTHREAD_START_ROUTINE start,
                    LPVOID parameter, DWORD flags, LPDWORD threadId) {
    static std::atomic<DWORD> lastId{0};
    layer::SuspendPoint();
    if (start == nullptr) {
        return nullptr;
    }
    auto thread = std::make_shared<layer::Thread>(start, parameter, (flags & CREATE_SUSPENDED) != 0);
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

DWORD SuspendThread(HANDLE thread) {
    layer::SuspendPoint();
    const auto found = layer::FindObjectAs<layer::Thread>(thread);
    if (found == nullptr) {
        return layer::SuspendFailed;
    }
    const DWORD previous = found->Suspend();
    layer::SuspendPoint();  // a thread may suspend itself
    return previous;
}

DWORD ResumeThread(HANDLE thread) {
    layer::SuspendPoint();
    const auto found = layer::FindObjectAs<layer::Thread>(thread);
    return found != nullptr ? found->Resume() : layer::SuspendFailed;
}
