#include "platform/linux/kernel/last_words.h"

#include <execinfo.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "platform/linux/kernel/log.h"

namespace layer {

namespace {

struct Crash {
    int Signal;
    std::string_view Words;
};

constexpr std::array Crashes{
    Crash{SIGSEGV, "ended by signal 11 (memory that is not there)"},
    Crash{SIGBUS, "ended by signal 7 (memory that cannot be reached)"},
    Crash{SIGILL, "ended by signal 4 (an instruction that is none)"},
    Crash{SIGFPE, "ended by signal 8 (a division by zero)"},
    Crash{SIGABRT, "ended by signal 6 (given up)"},
};

constexpr int MostCalls = 32, OwnCalls = 2;  // this file's handler and the system's way back from it

// Takes no memory and no lock: the crash may have come with either in hand.
void SayLast(int signal) {
    for (const Crash& crash : Crashes) {
        if (crash.Signal == signal) {
            Say(LogPriority::Error, crash.Words);
        }
    }
    void* calls[MostCalls];
    const int count = backtrace(calls, MostCalls);
    if (count > OwnCalls) {
        backtrace_symbols_fd(calls + OwnCalls, count - OwnCalls, STDERR_FILENO);
    }
    // The handler is gone: this comes when it returns, with the default's end at the place of the crash.
    raise(signal);
}

}  // namespace

void SpeakOnCrash() {
    // The first call loads what it needs.
    void* call = nullptr;
    backtrace(&call, 1);
    // A main thread whose stack is full speaks on this one.
    static std::array<char, 64 * 1024> stack;
    stack_t own{};
    own.ss_sp = stack.data();
    own.ss_size = stack.size();
    sigaltstack(&own, nullptr);
    for (const Crash& crash : Crashes) {
        struct sigaction before {};
        struct sigaction action {};
        action.sa_handler = SayLast;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_ONSTACK);
        if (sigaction(crash.Signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL) {
            sigaction(crash.Signal, &action, nullptr);
        }
    }
}

}  // namespace layer
