// Two programs that start at the same moment must not both become the first.
#pragma once

#include <optional>
#include <string>

#include "platform/linux/kernel/posix.h"

namespace layer {

// The lock that the programs of one terminal share while they look at, and change, who is there. Waits 5 s at
// most: a program that is stopped while it holds the lock must not stop all others.
class FolderLock {
  public:
    FolderLock();

  private:
    Descriptor file_;
};

// A program that looks for a window and, finding none, makes it itself, means to be the only one. While such
// a window is being made this holds the folder's lock, after another look; Granted says whether it is still
// the first. Every other top-level window is granted. The program listens from then on.
class FirstInstance {
  public:
    FirstInstance(const std::u16string& className, const std::u16string& title);
    bool Granted() const { return granted_; }

  private:
    std::optional<FolderLock> lock_;
    bool granted_ = true;
};

}  // namespace layer
