#include "platform/kernel.h"
#include "platform/linux/kernel/handle_table.h"
#include "platform/linux/kernel/object.h"
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
