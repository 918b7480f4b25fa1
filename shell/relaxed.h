// A word or flag that several threads read and write without a lock: each access is whole, and but for
// Exchange none orders another.
#pragma once

#include <atomic>

template <class T>
class Relaxed {
  public:
    constexpr Relaxed(T value = T{}) : value_(value) {}
    Relaxed(const Relaxed&) = delete;
    Relaxed& operator=(const Relaxed& other) { return *this = static_cast<T>(other); }
    Relaxed& operator=(T value) {
        value_.store(value, std::memory_order_relaxed);
        return *this;
    }
    operator T() const { return value_.load(std::memory_order_relaxed); }
    // Adds to a count that several threads count in.
    void Add(T value) { value_.fetch_add(value, std::memory_order_relaxed); }
    // Stores a value and returns the one it replaces, so that of two threads only one gets a handle to close.
    T Exchange(T value) { return value_.exchange(value, std::memory_order_acq_rel); }

  private:
    std::atomic<T> value_;
};
