// vantrel-watch: prints each scan of the terminal as one line of JSON.
#include "tools/watch.h"

#include <cstdio>
#include <string_view>

#include "platform/program.h"
#include "tools/arguments.h"
#include "tools/status.h"

namespace {

constexpr const char* Usage =
    "usage: vantrel-watch [--event | --messages] [--count N] [--timeout SECONDS]\n"
    "       vantrel-watch --status\n"
    "  --event     take the records from the message queue when the event is set (default)\n"
    "  --messages  take the records from the window messages\n"
    "  --status    print the running program's state as JSON\n"
    "  --count     end after N scans\n"
    "  --timeout   give up with exit code 1 when no scan comes for that long\n";

}  // namespace

bool PrintLine(const std::string& line) {
    if (std::puts(line.c_str()) < 0 || std::fflush(stdout) != 0) {
        std::perror("vantrel-watch: a scan could not be written");
        return false;
    }
    return true;
}

int main(int count, char** arguments) {
    if (count == 2 && std::string_view(arguments[1]) == "--status") {
        layer::EndProgram(PrintStatus());
    }
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
        layer::EndProgram(WatchMessages(options));
    }
    layer::EndOnSignal();
    layer::EndProgram(WatchEvent(options));
}
