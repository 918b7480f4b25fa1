#include "platform/kernel.h"
#include "platform/linux/kernel/event.h"
#include "platform/linux/kernel/local_object.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

class LocalEvent : public LocalObject, public Event {
  public:
    explicit LocalEvent(bool set) : set_(set) {}

    void Set() override {
        std::scoped_lock lock(mutex_);
        set_ = true;
        changed_.notify_all();
    }
    void Reset() override {
        std::scoped_lock lock(mutex_);
        set_ = false;
    }

  private:
    bool Ready() const override { return set_; }
    void Take() override { set_ = false; }

    bool set_;
};

class Semaphore : public LocalObject {
  public:
    Semaphore(LONG count, LONG most) : count_(count), most_(most) {}

    BOOL Release(LONG count, LONG* previous) {
        std::scoped_lock lock(mutex_);
        if (count < 1 || count > most_ - count_) {
            return FALSE;
        }
        if (previous != nullptr) {
            *previous = count_;
        }
        count_ += count;
        changed_.notify_all();
        return TRUE;
    }

  private:
    bool Ready() const override { return count_ > 0; }
    void Take() override { --count_; }

    LONG count_;
    const LONG most_;
};

}  // namespace

}  // namespace layer

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    layer::ParkAtEnd();
    if (manualReset) {
        return nullptr;
    }
    if (name != nullptr && name[0] != 0) {
        return layer::NewHandle(layer::OpenNamedEvent(name, initialState != FALSE));
    }
    return layer::NewHandle(std::make_shared<layer::LocalEvent>(initialState != FALSE));
}

HANDLE CreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG initialCount, LONG maximumCount, LPCWSTR name) {
    layer::ParkAtEnd();
    const bool named = name != nullptr && name[0] != 0;
    if (named || initialCount < 0 || maximumCount < 1 || initialCount > maximumCount) {
        return nullptr;
    }
    return layer::NewHandle(std::make_shared<layer::Semaphore>(initialCount, maximumCount));
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previousCount) {
    layer::ParkAtEnd();
    const auto found = layer::FindObjectAs<layer::Semaphore>(semaphore);
    return found != nullptr ? found->Release(count, previousCount) : FALSE;
}

BOOL EventModify(HANDLE event, DWORD action) {
    layer::ParkAtEnd();
    const auto found = layer::FindObjectAs<layer::Event>(event);
    if (found == nullptr || (action != EVENT_SET && action != EVENT_RESET)) {
        return FALSE;
    }
    action == EVENT_SET ? found->Set() : found->Reset();
    return TRUE;
}
