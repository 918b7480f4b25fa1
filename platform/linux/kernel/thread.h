// Cooperative suspension of the layer's threads, and the end of the program.
#pragma once

#include <functional>
#include <mutex>

namespace layer {

// Parks the calling thread while it is suspended, or for ever once the end of the program has begun and the
// thread is not the main one. Every call of the layer begins with it; a wait calls it again before it takes
// anything (a byte, a message, a token). Never call it with a lock held or a key down. Cheap when nothing is
// up.
void SuspendPoint();
// Whether SuspendPoint would park now: waits use it to let go first.
bool ParkRequested();
// Puts parking off for the calling thread, counted: while a key is down, SuspendPoint does nothing and
// ParkRequested says no, also inside the thread's other calls (a Sleep between down and up). Short, and
// without waits that have no end.
void DeferParking();
void AllowParking();
// Held while something (a byte, a message, a token) is taken out of a shared place: SuspendThread waits until
// it is let go, so that nothing is taken once SuspendThread has returned. When it is not granted, let go of
// every lock, call SuspendPoint and look again. Never wait or call the layer while holding it.
class Taking {
  public:
    Taking();
    Taking(const Taking&) = delete;
    Taking& operator=(const Taking&) = delete;
    bool Granted() const { return granted_; }

  private:
    std::unique_lock<std::mutex> lock_;
    bool granted_;
};
// `wake` is called (from the suspending thread, or at once when the request is there already) when the
// calling thread is asked to park while it is inside a wait of its own making, so that the wait can end and
// reach SuspendPoint; set around such a wait. Make and destroy it with no lock held that `wake` takes.
class WakeOnPark {
  public:
    explicit WakeOnPark(std::function<void()> wake);
    ~WakeOnPark();
    WakeOnPark(const WakeOnPark&) = delete;
    WakeOnPark& operator=(const WakeOnPark&) = delete;

  private:
    std::function<void()> wake_;
    std::function<void()>* outer_ = nullptr;
};

// The thread that runs WinMain.
bool OnMainThread();
void SetMainThread();

// Work to be done when the program ends, in reverse order of registration, on the main thread (keys released,
// vibrator off, shared names gone).
void AtEnd(std::function<void()> work);
// Begins the end: other threads park at their next call; runs the registered work once.
void BeginEnd();
bool Ending();
// The registered work alone, once; for tests.
void RunEndWork();

}  // namespace layer
