#include "platform/linux/kernel/log.h"

#include <execinfo.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <QStringEncoder>
#include <array>
#include <atomic>
#include <csignal>
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

constexpr int LongestWait = 100;  // milliseconds

// Whether standard error takes a line. A pipe that nobody reads, or a terminal that was stopped, is waited
// for once; until it takes lines again they are left out.
bool TakesLine() {
    static std::atomic<bool> stuck{false};
    pollfd file{STDERR_FILENO, POLLOUT, 0};
    const bool takes = poll(&file, 1, stuck ? 0 : LongestWait) != 0;
    stuck = !takes;
    return takes;
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
    if (!TakesLine()) {
        return;
    }
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

constexpr std::size_t CrashStackSize = 64 * 1024;
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
    if (count > OwnCalls && TakesLine()) {
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
    [[maybe_unused]] static const auto* own = new CrashStack;  // to the very end
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

CrashStack::CrashStack() {
    stack_t stack{};
    if (sigaltstack(nullptr, &stack) != 0 || (stack.ss_flags & SS_DISABLE) == 0) {
        return;
    }
    void* memory =
        mmap(nullptr, CrashStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) {
        return;
    }
    stack_ = memory;
    stack = {};
    stack.ss_sp = memory;
    stack.ss_size = CrashStackSize;
    sigaltstack(&stack, nullptr);
}

CrashStack::~CrashStack() {
    if (stack_ != nullptr) {
        stack_t none{};
        none.ss_flags = SS_DISABLE;
        sigaltstack(&none, nullptr);
        munmap(stack_, CrashStackSize);
    }
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
