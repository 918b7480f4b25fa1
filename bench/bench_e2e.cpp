// From the last byte of a label on the wire to its first key event, through the real program. The reader is a
// pseudo-terminal in this program's hands, so that the moment of the last byte is known; the keys come
// through the trace keyboard. With --check the best figure must keep within 5 ms of what the program waits by
// rule.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/laser.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_terminal.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr double Allowed = 5;
constexpr int Scans = 40;
constexpr int DecodeTime = 60;

// Those of this build, or of another one.
std::string Programs() {
    const char* folder = std::getenv("VANTREL_PROGRAMS");
    return folder != nullptr ? folder : VANTREL_PROGRAMS;
}

void Trigger(const char* action) {
    ChildProcess({"/bin/sh", "-c", "exec " + Programs() + "/vantrel-trigger " + action + " 2>/dev/null"})
        .Wait();
}

// Milliseconds from the label's last byte to the first key event; below 0 when none came.
double MeasureOne(Laser& laser, int keys) {
    const int before = laser.Starts();
    Trigger("down");
    if (!Serve(laser, 500, [&] { return laser.Starts() > before; })) {
        return -1;  // the last scan is still busy
    }
    Serve(laser, DecodeTime, [] { return false; });
    const auto sent = laser.SendLabel("AB12");
    pollfd file{keys, POLLIN, 0};
    const bool came = poll(&file, 1, 2000) > 0;
    const std::chrono::duration<double, std::milli> time = Clock::now() - sent;
    char events[4096];
    for (file.revents = 0; poll(&file, 1, 50) > 0 && read(keys, events, sizeof events) > 0;) {
    }
    Serve(laser, 50, [] { return false; });
    Trigger("up");
    Serve(laser, 100, [] { return false; });
    return came ? time.count() : -1;
}

}  // namespace

int main(int count, char** arguments) {
    const bool check = count == 2 && std::strcmp(arguments[1], "--check") == 0;
    const TemporaryTerminal terminal;
    Laser laser(terminal);
    SaveLaserSettings();
    // A pipe in place of a file: an event can be waited for.
    const std::string pipe = terminal.Path("keys");
    mkfifo(pipe.c_str(), 0600);
    const int keys = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);

    ChildProcess program({Programs() + "/vantrel"},
                         {"QT_QPA_PLATFORM=offscreen", "VANTREL_KEYBOARD=trace:" + pipe,
                          "XDG_RUNTIME_DIR=" + terminal.Folder()});
    const bool ready = Serve(laser, 20000, [&] {
        Trigger("up");
        return laser.Stops() > 0;
    });
    if (!ready) {
        std::fprintf(stderr, "vantrel does not become ready\n");
        return 1;
    }
    std::vector<double> times;
    for (int tries = 0; tries < 2 * Scans && times.size() < Scans; ++tries) {
        if (const double time = MeasureOne(laser, keys); time >= 0) {
            times.push_back(time);
        }
    }
    program.Signal(SIGTERM);
    const bool ended = program.Wait() == 0;
    if (times.size() < Scans / 2) {
        std::fprintf(stderr, "only %zu scans were typed\n", times.size());
        return 1;
    }
    std::sort(times.begin(), times.end());
    const double best = times.front();
    std::printf("From the last byte of a label to its first key event, %zu scans:\n", times.size());
    std::printf("  by rule  %6.2f ms  (30 ms of silence end a packet; 150 ms for its acknowledgement)\n",
                ByRule);
    std::printf("  best     %6.2f ms\n", best);
    std::printf("  median   %6.2f ms\n", times[times.size() / 2]);
    std::printf("  worst    %6.2f ms\n", times.back());
    return ended && (!check || (best >= ByRule - 1 && best <= ByRule + Allowed)) ? 0 : 1;
}
