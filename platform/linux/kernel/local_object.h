// Objects of this program that can be waited for: unnamed events, semaphores, threads. Closing the handle
// wakes who waits.
#pragma once

#include <condition_variable>
#include <mutex>

#include "platform/linux/kernel/object.h"

namespace layer {

class LocalObject : public Object {
  public:
    bool Close() override;
    DWORD Wait(DWORD milliseconds) override;

  protected:
    // Both are called with the mutex held. Take is called once per fulfilled wait.
    virtual bool Ready() const = 0;
    virtual void Take() = 0;

    std::mutex mutex_;
    // Always notified as a whole.
    std::condition_variable changed_;

  private:
    bool closed_ = false;
};

}  // namespace layer
