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
