#include "platform/linux/kernel/log.h"

#include <sys/uio.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <QStringEncoder>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

// The journal says by this variable that it reads standard error and takes a priority in front of each line.
const bool JournalReads = std::getenv("JOURNAL_STREAM") != nullptr;

bool WantedByEnvironment() {
    const char* value = std::getenv("VANTREL_LOG");
    return value != nullptr && std::string_view(value) == "debug";
}

std::atomic<bool>& DebugWanted() {
    static std::atomic<bool> wanted{WantedByEnvironment()};
    return wanted;
}

}  // namespace

// One write for the whole line: two threads' lines do not mix.
void Say(LogPriority priority, std::string_view text) {
    const char prefix[] = {'<', static_cast<char>('0' + static_cast<int>(priority)), '>'};
    constexpr std::string_view name = "vantrel: ";
    const auto part = [](std::string_view piece) {
        return iovec{const_cast<char*>(piece.data()), piece.size()};
    };
    const std::string_view front(prefix, JournalReads ? sizeof prefix : 0);
    const std::array<iovec, 4> line{part(front), part(name), part(text), part("\n")};
    [[maybe_unused]] const auto written = writev(STDERR_FILENO, line.data(), line.size());
}

void Say(LogPriority priority, const char* format, ...) {
    char text[1000];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    Say(priority, std::string_view(text));
}

}  // namespace layer

// A scan writes lines, too, and takes no memory: the characters are turned in place.
void WriteLogLine(LogPriority priority, LPCWSTR text) {
    constexpr std::size_t longest = 1024;
    const std::u16string_view line = std::u16string_view(text).substr(0, longest);
    QStringEncoder encoder(QStringEncoder::Utf8);
    char bytes[4 * longest];
    const char* end = encoder.appendToBuffer(bytes, QStringView(line));
    layer::Say(priority, std::string_view(bytes, static_cast<std::size_t>(end - bytes)));
}

bool DebugLinesWanted() {
    return layer::DebugWanted().load(std::memory_order_relaxed);
}

void WantDebugLines() {
    layer::DebugWanted() = true;
}

void ReportReady(LPCWSTR state) {
    sd_notifyf(0, "READY=1\nSTATUS=%s", layer::ToUtf8(state).c_str());
}
