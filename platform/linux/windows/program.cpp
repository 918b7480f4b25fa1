#include "platform/program.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/start_windows.h"

namespace layer {

void StartHiddenWindows() {
    // Any display will do, and none is asked for.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    StartWindows();
    TakeSignals();
}

// Whoever waits for an event is not woken by a signal: a thread of its own takes the signals that end
// programs.
void EndOnSignal() {
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&endings, signal);
    }
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);
    std::thread([endings] {
        int signal = 0;
        sigwait(&endings, &signal);
        EndProgram(0);
    }).detach();
}

void EndProgram(int code) {
    BeginEnd();
    std::fflush(nullptr);
    _exit(code);
}

}  // namespace layer
