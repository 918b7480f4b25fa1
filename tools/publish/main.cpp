// vantrel-publish: hands every scan of the terminal to an MQTT broker.
#include <fcntl.h>
#include <sys/file.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/program.h"
#include "tools/publish/broker.h"
#include "tools/publish/scan_source.h"

namespace {

constexpr const char* Usage =
    "usage: vantrel-publish [--config FILE] [--show]\n"
    "  --config  the configuration (default $XDG_CONFIG_HOME/vantrel/publish.toml)\n"
    "  --show    print what waits for the broker, a line of JSON each, and end\n";

std::string DefaultConfiguration() {
    const char* configuration = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    const std::string folder = configuration != nullptr && *configuration != 0
                                   ? configuration
                                   : std::string(home != nullptr ? home : "") + "/.config";
    return folder + "/vantrel/publish.toml";
}

int Fail(const std::string& message) {
    std::fprintf(stderr, "vantrel-publish: %s\n", message.c_str());
    return 1;
}

int Show(const PublishOptions& options) {
    ScanStore store;
    if (const std::string wrong = store.OpenToLook(options.Store); !wrong.empty()) {
        return Fail(wrong);
    }
    std::int64_t last = 0;
    std::size_t count = 0;
    for (;;) {
        const auto messages = store.After(last, 100);
        for (const WaitingMessage& message : messages) {
            std::puts(message.Payload.c_str());
            last = message.Sequence;
        }
        count += messages.size();
        if (messages.empty()) {
            break;
        }
    }
    std::fprintf(stderr, "%zu waiting\n", count);
    return 0;
}

int Publish(const PublishOptions& options) {
    // Two of them would publish every scan twice.
    const int lock = open((options.Store + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock < 0 || flock(lock, LOCK_EX | LOCK_NB) != 0) {
        return Fail(options.Store + " is in use");
    }
    // A limit on the size of files is a full disk like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    ScanStore store;
    if (const std::string wrong = store.Open(options.Store, options.MostBytes); !wrong.empty()) {
        return Fail(wrong);
    }
    Broker broker(options, store);
    if (!broker.Runs()) {
        return Fail("no thread to talk to the broker");
    }
    const int result = TakeScans(options, store, [&broker] { broker.Wake(); });
    broker.Stop();
    // The counter's thread goes with the program.
    layer::EndProgram(result);
}

}  // namespace

int main(int count, char** arguments) {
    std::string configuration = DefaultConfiguration();
    bool show = false;
    for (int at = 1; at < count; ++at) {
        const std::string_view argument = arguments[at];
        if (argument == "--show") {
            show = true;
        } else if (argument == "--config" && at + 1 < count) {
            configuration = arguments[++at];
        } else {
            std::fputs(Usage, stderr);
            return 2;
        }
    }
    PublishOptions options;
    if (const std::string wrong = ReadPublishOptions(configuration, options); !wrong.empty()) {
        return Fail(wrong);
    }
    return show ? Show(options) : Publish(options);
}
