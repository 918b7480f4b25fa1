// vantrel-watch: prints each scan of the terminal as one line of JSON.
#include "tools/watch.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string_view>
#include <thread>

#include "platform/linux/kernel/thread.h"
#include "tools/arguments.h"

namespace {

constexpr const char* Usage =
    "usage: vantrel-watch [--event | --messages] [--count N] [--timeout SECONDS]\n"
    "  --event     take the records from the message queue when the event is set (default)\n"
    "  --messages  take the records from the window messages\n"
    "  --count     end after N scans\n"
    "  --timeout   give up with exit code 1 when no scan comes for that long\n";

// Gives the shared names and the socket back.
[[noreturn]] void End(int code) {
    layer::BeginEnd();
    std::fflush(nullptr);
    _exit(code);
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
        End(0);
    }).detach();
}

}  // namespace

int main(int count, char** arguments) {
    WatchOptions options;
    bool messages = false;
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        const char* value = at + 1 < count ? arguments[at + 1] : "";
        if (argument == "--event") {
            messages = false;
        } else if (argument == "--messages") {
            messages = true;
        } else if (argument == "--count" && ReadNumberArgument(value, 1'000'000'000, options.Count)) {
            ++at;
        } else if (argument == "--timeout" && ReadNumberArgument(value, 1'000'000, options.TimeoutSeconds)) {
            ++at;
        } else {
            std::fputs(Usage, stderr);
            return 2;
        }
    }
    if (messages) {
        End(WatchMessages(options));
    }
    EndOnSignal();
    End(WatchEvent(options));
}
