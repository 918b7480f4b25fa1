// Handles of one kind and what they stand for. Any thread.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace layer {

// Numbers begin behind `first`, go in steps of 4 and are never given twice, so that a closed handle is never
// taken for a later one. Keep tables for ever (`static auto* table = new ...`): threads may
// use handles while the program ends.
template <class Handle, class Value>
class HandleTable {
  public:
    explicit HandleTable(std::uintptr_t first) : last_(first) {}

    Handle Add(Value value) {
        std::scoped_lock lock(mutex_);
        last_ += 4;
        values_.emplace(last_, std::move(value));
        return reinterpret_cast<Handle>(last_);
    }
    // An empty value for anything that is no open handle of the table.
    Value Find(Handle handle) const {
        std::scoped_lock lock(mutex_);
        const auto found = values_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found != values_.end() ? found->second : Value();
    }
    bool Contains(Handle handle) const {
        std::scoped_lock lock(mutex_);
        return values_.contains(reinterpret_cast<std::uintptr_t>(handle));
    }
    // Takes the handle away and gives back what it stood for.
    Value Remove(Handle handle) {
        std::scoped_lock lock(mutex_);
        auto node = values_.extract(reinterpret_cast<std::uintptr_t>(handle));
        return node ? std::move(node.mapped()) : Value();
    }
    // Calls `use` with every handle and its value, the oldest first, with the table's lock held.
    template <class Use>
    void Each(const Use& use) {
        std::scoped_lock lock(mutex_);
        for (auto& [number, value] : values_) {
            use(reinterpret_cast<Handle>(number), value);
        }
    }

  private:
    mutable std::mutex mutex_;
    std::map<std::uintptr_t, Value> values_;
    std::uintptr_t last_;
};

}  // namespace layer
