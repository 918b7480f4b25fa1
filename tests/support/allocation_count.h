// Counts what a thread takes from the heap.
#pragma once

#include <cstddef>

// Counts from its making on, in the thread that made it: malloc, its kin, and operator new.
class CountAllocations {
  public:
    CountAllocations();
    std::size_t Count() const;

  private:
    std::size_t start_;
};

// Leaves allocations of this thread out of every count while it lives: for calls into code that may take
// memory.
class UncountedAllocations {
  public:
    UncountedAllocations();
    ~UncountedAllocations();
    UncountedAllocations(const UncountedAllocations&) = delete;
    UncountedAllocations& operator=(const UncountedAllocations&) = delete;
};
