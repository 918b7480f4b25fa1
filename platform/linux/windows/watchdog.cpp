#include "platform/linux/windows/start_windows.h"

#include <sys/socket.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <QApplication>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/linux/kernel/log.h"
#include "platform/linux/windows/screen.h"

namespace layer {

namespace {

constexpr unsigned Patience = 15, Respite = 5;        // seconds
constexpr std::uint64_t OrdinaryPeriod = 60'000'000;  // microseconds

std::atomic<unsigned> Period{0};  // seconds, none while nobody watches
std::atomic<int> Doubts{0};
int Connection = -1;  // to the display

void GiveDisplayUp(int) {
    Say(LogPriority::Error, "the display does not answer");
    _exit(1);
}

// The server's name at the other end of a connection.
struct Peer {
    sockaddr_storage Name{};
    socklen_t Size = sizeof Name;
    explicit Peer(int file) {
        if (getpeername(file, reinterpret_cast<sockaddr*>(&Name), &Size) != 0) {
            Size = 0;
        }
    }
    bool operator==(const Peer& other) const {
        return Size > sizeof Name.ss_family && Size == other.Size &&
               std::memcmp(&Name, &other.Name, Size) == 0;
    }
};

// All connections to that server: Qt's, the keyboard's.
void CutDisplay() {
    constexpr int usualLimit = 1024;
    const Peer server(Connection);
    for (int file = 0; file < usualLimit; ++file) {
        if (Peer(file) == server) {
            shutdown(file, SHUT_RDWR);
        }
    }
}

// A program that was stopped comes round in the first respite. A thread that waits for the display for ever,
// because it is stopped or a failed call has left the connection's threads waiting for each other, comes
// round in the second: for Qt a display that has gone is the end.
void DoubtMainThread(int) {
    const int saved = errno;
    switch (Doubts++) {
        case 0:
            break;
        case 1:
            if (Connection >= 0) {
                Say(LogPriority::Error, "the main thread hangs: the display is given up");
                CutDisplay();
                break;
            }
            [[fallthrough]];
        default:
            Say(LogPriority::Error, "the main thread hangs");
            std::abort();
    }
    alarm(Respite);
    errno = saved;
}

}  // namespace

void AwaitDisplay() {
    std::signal(SIGALRM, GiveDisplayUp);
    alarm(Patience);
}

void DisplayHasCome() {
    alarm(0);
    std::signal(SIGALRM, SIG_DFL);
}

void WatchMainThread() {
    Connection = DisplayConnection();
    std::uint64_t period = 0;
    if (sd_watchdog_enabled(0, &period) <= 0) {
        period = OrdinaryPeriod;
    }
    Period = static_cast<unsigned>(std::max<std::uint64_t>(period / 1'000'000, 1));
    std::signal(SIGALRM, DoubtMainThread);
    TellWatchdog();
    auto* feeder = new QTimer(qApp);
    QObject::connect(feeder, &QTimer::timeout, feeder, TellWatchdog);
    feeder->start(std::chrono::milliseconds(std::max<std::uint64_t>(period / 2000, 1)));
}

void TellWatchdog() {
    sd_notify(0, "WATCHDOG=1");
    if (Period > 0) {
        alarm(Period);
        Doubts = 0;
    }
}

void HurryMainThread() {
    if (Period > 0) {
        alarm(std::min<unsigned>(Period, Patience));
    }
}

}  // namespace layer
