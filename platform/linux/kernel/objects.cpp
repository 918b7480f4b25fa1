#include "platform/kernel.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/kernel/local_object.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

HandleTable<HANDLE, std::shared_ptr<Object>>& Table() {
    static auto* table = new HandleTable<HANDLE, std::shared_ptr<Object>>(0);
    return *table;
}

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
