// Handles and what can be waited for in this program: events and semaphores.
#include "platform/kernel.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/kernel/object.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

HandleTable<HANDLE, std::shared_ptr<Object>>& Table() {
    static auto* table = new HandleTable<HANDLE, std::shared_ptr<Object>>(0);
    return *table;
}

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

DWORD Object::Wait(DWORD) {
    return WAIT_FAILED;
}

bool LocalObject::Close() {
    std::scoped_lock lock(mutex_);
    closed_ = true;
    changed_.notify_all();
    return true;
}

DWORD LocalObject::Wait(DWORD milliseconds) {
    Clock& clock = CurrentClock();
    const std::uint64_t deadline = clock.DeadlineAfter(milliseconds);
    std::unique_lock lock(mutex_);
    const bool fulfilled = clock.WaitUntil(lock, changed_, deadline, [this] { return closed_ || Ready(); });
    if (closed_) {
        return WAIT_FAILED;
    }
    if (!fulfilled) {
        return WAIT_TIMEOUT;
    }
    Take();
    return WAIT_OBJECT_0;
}

HANDLE NewHandle(std::shared_ptr<Object> object) {
    return object != nullptr ? Table().Add(std::move(object)) : nullptr;
}

std::shared_ptr<Object> FindObject(HANDLE handle) {
    return Table().Find(handle);
}

bool ReleaseHandle(HANDLE handle) {
    const std::shared_ptr<Object> object = Table().Remove(handle);
    return object != nullptr && object->Close();
}

}  // namespace layer

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    layer::ParkAtEnd();
    const std::shared_ptr<layer::Object> found = layer::FindObject(object);
    return found != nullptr ? found->Wait(milliseconds) : WAIT_FAILED;
}

BOOL CloseHandle(HANDLE object) {
    layer::ParkAtEnd();
    return layer::ReleaseHandle(object) ? TRUE : FALSE;
}

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
