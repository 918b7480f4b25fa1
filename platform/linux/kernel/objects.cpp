#include <array>
#include <mutex>

#include "platform/kernel.h"
#include "platform/linux/kernel/object.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

constexpr std::size_t MaxHandles = 4096;

// A handle's value holds its slot and the slot's generation, so that a closed handle is never taken for the
// one that got its slot later. Values are multiples of 4 and never 0, as the platform's are.
struct Slot {
    std::shared_ptr<Object> Held;
    std::uint32_t Generation = 0;
};

struct HandleTable {
    std::mutex Mutex;
    std::array<Slot, MaxHandles> Slots;
    std::size_t Next = 0;
};

// Never destroyed: threads may still use handles while the program ends.
HandleTable& Table() {
    static auto* table = new HandleTable;
    return *table;
}

HANDLE MakeValue(std::size_t index, std::uint32_t generation) {
    const std::uintptr_t value = (std::uintptr_t{generation} << 16) | ((index + 1) << 2);
    return reinterpret_cast<HANDLE>(value);
}

// With the table's lock held.
Slot* FindSlot(HandleTable& table, HANDLE handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::size_t number = (value & 0xFFFF) >> 2;
    if ((value & 3) != 0 || number == 0 || number > MaxHandles) {
        return nullptr;
    }
    Slot& slot = table.Slots[number - 1];
    return slot.Held != nullptr && MakeValue(number - 1, slot.Generation) == handle ? &slot : nullptr;
}

}  // namespace

DWORD Object::Wait(DWORD) {
    return WAIT_FAILED;
}

HANDLE NewHandle(std::shared_ptr<Object> object) {
    if (object == nullptr) {
        return nullptr;
    }
    HandleTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    for (std::size_t tried = 0; tried < MaxHandles; ++tried) {
        const std::size_t index = (table.Next + tried) % MaxHandles;
        Slot& slot = table.Slots[index];
        if (slot.Held == nullptr) {
            slot.Held = std::move(object);
            table.Next = index + 1;
            return MakeValue(index, ++slot.Generation);
        }
    }
    return nullptr;
}

std::shared_ptr<Object> FindObject(HANDLE handle) {
    HandleTable& table = Table();
    std::scoped_lock lock(table.Mutex);
    const Slot* slot = FindSlot(table, handle);
    return slot != nullptr ? slot->Held : nullptr;
}

bool ReleaseHandle(HANDLE handle) {
    std::shared_ptr<Object> object;
    {
        HandleTable& table = Table();
        std::scoped_lock lock(table.Mutex);
        Slot* slot = FindSlot(table, handle);
        if (slot == nullptr) {
            return false;
        }
        object = std::move(slot->Held);
        slot->Held = nullptr;
    }
    object->Close();
    return true;
}

}  // namespace layer

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    layer::SuspendPoint();
    const std::shared_ptr<layer::Object> found = layer::FindObject(object);
    return found != nullptr ? found->Wait(milliseconds) : WAIT_FAILED;
}

BOOL CloseHandle(HANDLE object) {
    layer::SuspendPoint();
    return layer::ReleaseHandle(object) ? TRUE : FALSE;
}
