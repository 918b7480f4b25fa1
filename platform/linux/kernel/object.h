// What a HANDLE stands for. Objects are counted, so that a handle closed in one thread never frees what
// another thread is waiting on.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/base.h"

namespace layer {

class Object {
  public:
    virtual ~Object() = default;
    // The handle has been closed. Called once; false when what was written could not be kept. Objects of this
    // program and ports wake who waits, whose calls fail.
    virtual bool Close() { return true; }
    // Waits for the object (event, semaphore, thread): a WAIT_ value. Objects that cannot be waited for fail.
    virtual DWORD Wait(DWORD milliseconds);
};

// A file or a port: what ReadFile and WriteFile work on.
class Stream : public Object {
  public:
    virtual BOOL Read(void* buffer, DWORD size, DWORD& read) = 0;
    virtual BOOL Write(const void* buffer, DWORD size, DWORD& written) = 0;
    virtual DWORD Size() { return 0xFFFFFFFFu; }
    // Where the next read or write begins; false where there are no places.
    virtual bool MoveTo(DWORD) { return false; }
};

// Objects of this program that can be waited for: unnamed events, semaphores, threads. Closing the handle
// wakes who waits.
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

// What EventModify works on.
class Event {
  public:
    virtual ~Event() = default;
    virtual void Set() = 0;
};

// Creates or opens an event that programs of one terminal share; null for a name that cannot be used, or when
// the host refuses. The initial state counts only for an event that does not exist yet. Two programs that set
// it at the very same instant may be seen as two settings.
std::shared_ptr<Object> OpenNamedEvent(LPCWSTR name, bool set);

// Gives the object a handle; null for no object.
HANDLE NewHandle(std::shared_ptr<Object> object);
// The object of a handle, or null for anything that is not an open handle.
std::shared_ptr<Object> FindObject(HANDLE handle);
template <class T>
std::shared_ptr<T> FindObjectAs(HANDLE handle) {
    return std::dynamic_pointer_cast<T>(FindObject(handle));
}
// Takes the handle away and closes its object; false for anything that is not an open handle, or what the
// object says.
bool ReleaseHandle(HANDLE handle);

}  // namespace layer
