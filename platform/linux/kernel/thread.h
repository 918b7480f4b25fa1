// The main thread, and what happens to the others when the program ends.
#pragma once

#include <functional>
#include <mutex>
#include <thread>

namespace layer {

// Parks the calling thread for ever once the end of the program has begun, unless it is the main one: the
// process ends under it. Calls of the layer begin with it. Never call it with a lock held. Cheap before that.
void ParkAtEnd();

// A thread of the layer's own; not joinable when the host has no room for one.
std::thread StartHostThread(std::function<void()> work);

// The thread that runs WinMain.
bool OnMainThread();
void SetMainThread();

// Work to be done when the program ends, in reverse order of registration, on the main thread (keys released,
// vibrator off, shared names gone).
void AtEnd(std::function<void()> work);
// Begins the end: other threads park at their next call (ParkAtEnd); runs the registered work once.
void BeginEnd();
bool Ending();
// The registered work alone, once; for tests.
void RunEndWork();

}  // namespace layer
