#include "platform/kernel.h"
#include "platform/linux/kernel/local_object.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

class Semaphore : public LocalObject {
  public:
    Semaphore(LONG count, LONG most) : count_(count), most_(most) {}

    bool Release(LONG count) {
        std::scoped_lock lock(mutex_);
        if (count < 1 || count > most_ - count_) {
            return false;
        }
        count_ += count;
        changed_.notify_all();
        return true;
    }

  private:
    bool Ready() const override { return count_ > 0; }
    void Take() override { --count_; }

    LONG count_;
    const LONG most_;
};

// With automatic reset it is a semaphore that holds at most one.
class LocalEvent : public Semaphore, public Event {
  public:
    explicit LocalEvent(bool set) : Semaphore(set ? 1 : 0, 1) {}
    void Set() override { Release(1); }
};

}  // namespace

}  // namespace layer

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    layer::ParkAtEnd();
    if (manualReset) {
        return nullptr;
    }
    if (name != nullptr) {
        return layer::NewHandle(layer::OpenNamedEvent(name, initialState != FALSE));
    }
    return layer::NewHandle(std::make_shared<layer::LocalEvent>(initialState != FALSE));
}

HANDLE CreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG initialCount, LONG maximumCount, LPCWSTR) {
    layer::ParkAtEnd();
    return layer::NewHandle(std::make_shared<layer::Semaphore>(initialCount, maximumCount));
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG*) {
    layer::ParkAtEnd();
    const auto found = layer::FindObjectAs<layer::Semaphore>(semaphore);
    return found != nullptr && found->Release(count);
}

BOOL EventModify(HANDLE event, DWORD action) {
    layer::ParkAtEnd();
    const auto found = layer::FindObjectAs<layer::Event>(event);
    if (found == nullptr || action != EVENT_SET) {
        return FALSE;
    }
    found->Set();
    return TRUE;
}
