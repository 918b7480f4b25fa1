// The lock that the programs of one terminal share while they look at, and change, who is there.
#pragma once

#include <string>

namespace layer {

// The folder of windows, where every program has its socket.
std::string WindowsFolder();

class FolderLock {
  public:
    // Waits a few seconds at most; a program that is stopped while it holds the lock must not stop all
    // others.
    FolderLock();
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    bool Held() const { return held_; }

  private:
    int file_ = -1;
    bool held_ = false;
};

}  // namespace layer
