// A descriptor per thread that other threads make readable, to end the thread's poll().
#pragma once

namespace layer {

// The calling thread's descriptor, or -1 when the system has none left (a wait then looks around in turns).
int ThreadWakeFd();
// Wakes the thread that waits on the descriptor. Any thread.
void WakeFd(int fd);
// Takes back what was not waited for.
void ClearWakeFd(int fd);

}  // namespace layer
