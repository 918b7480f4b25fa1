#include "platform/linux/serial/wire_trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/linux/kernel/log.h"

namespace layer {

namespace {

using Clock = std::chrono::steady_clock;

// One file for both lines, appended to by single writes.
struct TraceFile {
    int Fd = -1;
    Clock::time_point Start = Clock::now();
};

TraceFile OpenTrace() {
    TraceFile trace;
    const char* name = std::getenv("VANTREL_TRACE");
    if (name == nullptr || *name == 0) {
        return trace;
    }
    trace.Fd = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
    if (trace.Fd < 0) {
        Say(LogPriority::Warning, "the wire trace %s cannot be written: %s", name, std::strerror(errno));
    } else {
        constexpr std::string_view head = "# vantrel wire trace 1\n";
        [[maybe_unused]] const auto written = write(trace.Fd, head.data(), head.size());
    }
    return trace;
}

const TraceFile& Trace() {
    static const TraceFile trace = OpenTrace();
    return trace;
}

void WriteLine(const std::string& port, std::string_view text) {
    const auto time =
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - Trace().Start).count();
    char stamp[40];
    const int size =
        std::snprintf(stamp, sizeof stamp, "%lld.%06lld ", static_cast<long long>(time / 1000000),
                      static_cast<long long>(time % 1000000));
    std::string line(stamp, static_cast<std::size_t>(size));
    line.append(port).append(" ").append(text).append("\n");
    static std::atomic<bool> torn = false;
    if (!torn && write(Trace().Fd, line.data(), line.size()) != static_cast<ssize_t>(line.size()) &&
        !torn.exchange(true)) {
        Say(LogPriority::Warning, "the wire trace ends here: %s", std::strerror(errno));
    }
}

}  // namespace

std::unique_ptr<WireTrace> WireTrace::Of(std::string_view port) {
    return Trace().Fd < 0 ? nullptr : std::unique_ptr<WireTrace>(new WireTrace(port));
}

void WireTrace::Changed(std::string_view what) {
    WriteLine(port_, what);
}

void WireTrace::Bytes(char direction, std::span<const BYTE> bytes) {
    if (bytes.empty()) {
        return;
    }
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text(1, direction);
    for (const BYTE byte : bytes) {
        text.append({' ', digits[byte >> 4], digits[byte & 15]});
    }
    WriteLine(port_, text);
}

}  // namespace layer
