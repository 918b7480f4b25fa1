#include "simulator/pseudo_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace readers {
namespace {

constexpr std::chrono::milliseconds SettleTime{5};

unsigned RateOf(speed_t speed) {
    switch (speed) {
        case B1200:
            return 1200;
        case B2400:
            return 2400;
        case B4800:
            return 4800;
        case B9600:
            return 9600;
        case B19200:
            return 19200;
        case B38400:
            return 38400;
        case B57600:
            return 57600;
        case B115200:
            return 115200;
        default:
            return 0;
    }
}

std::string SystemProblem(std::string_view what) {
    return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

bool MakeTerminalFolder(const std::filesystem::path& folder, std::string& problem) {
    std::error_code ignored;
    if (std::filesystem::is_directory(folder, ignored)) {
        return true;
    }
    const auto above = folder.parent_path();
    if (!above.empty() && above != folder && !MakeTerminalFolder(above, problem)) {
        return false;
    }
    if (!folder.filename().empty() && mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        problem = SystemProblem(folder.string());
        return false;
    }
    return true;
}

PseudoTerminal::PseudoTerminal(EventLoop& loop, std::filesystem::path link, Handlers handlers)
    : Loop(loop), Link(std::move(link)), On(std::move(handlers)) {}

PseudoTerminal::~PseudoTerminal() {
    Unplug();
}

bool PseudoTerminal::Plug(std::string& problem) {
    struct stat there;
    if (lstat(Link.c_str(), &there) == 0 && !S_ISLNK(there.st_mode)) {
        problem = Link.string() + " is no link";
        return false;
    }
    Master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    std::array<char, 128> device{};
    if (Master < 0 || grantpt(Master) != 0 || unlockpt(Master) != 0 ||
        ptsname_r(Master, device.data(), device.size()) != 0) {
        problem = SystemProblem("pseudo-terminal");
        Unplug();
        return false;
    }
    SlaveName = device.data();
    termios settings{};
    tcgetattr(Master, &settings);
    cfmakeraw(&settings);
    tcsetattr(Master, TCSANOW, &settings);
    // Before the first opening the other end does not count as closed; one opening of our own makes it so.
    close(open(SlaveName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    Notices = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (Notices < 0) {
        // A user may have no more than fs.inotify.max_user_instances of them.
        problem = SystemProblem("inotify");
        Unplug();
        return false;
    }
    WatchDevice();

    if (DeviceWatch < 0 || !MakeLink()) {
        problem = SystemProblem(Link.string());
        Unplug();
        return false;
    }
    Loop.Watch(Notices, POLLIN, [this](short) { ReadNotices(); });
    return true;
}

// The link is never missing while it is replaced: a fresh one takes the old one's place.
bool PseudoTerminal::MakeLink() {
    const std::string fresh =
        Link.parent_path() / ("." + Link.filename().string() + "." + std::to_string(getpid()));
    unlink(fresh.c_str());
    if (symlink(SlaveName.c_str(), fresh.c_str()) == 0 && rename(fresh.c_str(), Link.c_str()) == 0) {
        return true;
    }
    const int reason = errno;
    unlink(fresh.c_str());
    errno = reason;
    return false;
}

void PseudoTerminal::Unplug() {
    std::error_code ignored;
    if (!SlaveName.empty() && std::filesystem::read_symlink(Link, ignored) == SlaveName) {
        unlink(Link.c_str());
    }
    for (int* descriptor : {&Master, &Notices}) {
        if (*descriptor >= 0) {
            Loop.Unwatch(*descriptor);
            close(*descriptor);
            *descriptor = -1;
        }
    }
    Loop.Cancel(Settling);
    Settling = 0;
    DeviceWatch = -1;
    SlaveName.clear();
    Openers = 0;
    if (Open) {
        BecomeClosed();
    }
}

void PseudoTerminal::WatchDevice() {
    DeviceWatch = inotify_add_watch(Notices, SlaveName.c_str(), IN_OPEN | IN_CLOSE);
}

bool PseudoTerminal::HungUp() const {
    pollfd master{Master, 0, 0};
    poll(&master, 1, 0);
    return (master.revents & POLLHUP) != 0;
}

unsigned PseudoTerminal::HostRate() const {
    termios settings{};
    return Master >= 0 && tcgetattr(Master, &settings) == 0 ? RateOf(cfgetospeed(&settings)) : 0;
}

void PseudoTerminal::ReadNotices() {
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (ssize_t got; Notices >= 0 && (got = read(Notices, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at + static_cast<ssize_t>(sizeof(inotify_event)) <= got;) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            if (event.wd != DeviceWatch) {
                continue;  // left over from a watch that was taken off
            }
            if (event.mask & IN_OPEN) {
                ++Openers;
                BecomeOpen();
            } else if ((event.mask & IN_CLOSE) && Openers > 0 && --Openers == 0) {
                BecomeClosed();
            }
        }
    }
    SettleOpenState();
}

// Equal notices that follow one another are told once, so the count can be wrong when two programs have the
// device open. The hang-up state is always right, but a moment ahead of the notice.
void PseudoTerminal::SettleOpenState() {
    if (Master < 0 || Settling != 0 || HungUp() != Open) {
        return;
    }
    Settling = Loop.At(Clock::now() + SettleTime, [this] {
        Settling = 0;
        const bool closed = HungUp();
        Openers = closed ? 0 : std::max(Openers, 1);
        closed ? BecomeClosed() : BecomeOpen();
    });
}

void PseudoTerminal::BecomeOpen() {
    // Also when it counts as open already: a hang-up may have ended the watch meanwhile.
    Loop.Watch(Master, POLLIN, [this](short events) {
        if (events & POLLIN) {
            ReadMaster();
        } else {
            Loop.Unwatch(Master);  // hung up: the notice follows
            SettleOpenState();
        }
    });
    if (!Open) {
        Open = true;
        On.Opened();
    }
}

void PseudoTerminal::BecomeClosed() {
    if (!Open) {
        return;
    }
    if (Master >= 0) {
        ReadMaster();
        Loop.Unwatch(Master);
    }
    Open = false;
    On.Closed();
    if (Master >= 0 && HungUp()) {
        ForgetUnread();
        SettleOpenState();
    }
}

void PseudoTerminal::ForgetUnread() {
    // Only the other end can throw its input away; our own visit there must not be taken for an opening.
    inotify_rm_watch(Notices, DeviceWatch);
    const int slave = open(SlaveName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (slave >= 0) {
        tcflush(slave, TCIFLUSH);
        close(slave);
    }
    WatchDevice();
}

void PseudoTerminal::ReadMaster() {
    std::array<std::uint8_t, 4096> buffer;
    for (ssize_t got; Master >= 0 && (got = read(Master, buffer.data(), buffer.size())) > 0;) {
        On.Received(std::span(buffer).first(static_cast<std::size_t>(got)));
    }
}

bool PseudoTerminal::Write(std::span<const std::uint8_t> bytes) {
    return Master >= 0 && write(Master, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

}  // namespace readers
