#include "simulator/line.h"

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

// The buffer of a usual UART: its reader is told after so many bytes, not after each.
constexpr std::size_t Burst = 16;
constexpr Milliseconds SettleTime{5};

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

Line::Line(EventLoop& loop, Console& console, std::string name, std::filesystem::path link, unsigned rate)
    : Loop(loop), Out(console), PortName(std::move(name)), Link(std::move(link)), ReaderRate(rate) {}

Line::~Line() {
    Unplug();
}

bool Line::Plug(std::string& problem) {
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
    WatchDevice();

    const std::string fresh =
        Link.parent_path() / ("." + Link.filename().string() + "." + std::to_string(getpid()));
    unlink(fresh.c_str());
    if (DeviceWatch < 0 || symlink(SlaveName.c_str(), fresh.c_str()) != 0 ||
        rename(fresh.c_str(), Link.c_str()) != 0) {
        problem = SystemProblem(Link.string());
        unlink(fresh.c_str());
        Unplug();
        return false;
    }
    Loop.Watch(Notices, POLLIN, [this](short) { ReadNotices(); });
    return true;
}

void Line::Unplug() {
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
    Cancel(Settling);
    Settling = 0;
    DeviceWatch = -1;
    SlaveName.clear();
    Openers = 0;
    if (Open) {
        BecomeClosed();
    }
}

void Line::WatchDevice() {
    DeviceWatch = inotify_add_watch(Notices, SlaveName.c_str(), IN_OPEN | IN_CLOSE);
}

bool Line::HungUp() const {
    pollfd master{Master, 0, 0};
    poll(&master, 1, 0);
    return (master.revents & POLLHUP) != 0;
}

unsigned Line::HostRate() const {
    termios settings{};
    return Master >= 0 && tcgetattr(Master, &settings) == 0 ? RateOf(cfgetospeed(&settings)) : 0;
}

void Line::ReadNotices() {
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
void Line::SettleOpenState() {
    if (Master < 0 || Settling != 0 || HungUp() != Open) {
        return;
    }
    Settling = After(SettleTime, [this] {
        Settling = 0;
        const bool closed = HungUp();
        Openers = closed ? 0 : std::max(Openers, 1);
        closed ? BecomeClosed() : BecomeOpen();
    });
}

void Line::BecomeOpen() {
    if (Open) {
        return;
    }
    Open = true;
    Loop.Watch(Master, POLLIN, [this](short events) {
        if (events & POLLIN) {
            ReadMaster();
        } else {
            Loop.Unwatch(Master);  // hung up: the notice follows
            SettleOpenState();
        }
    });
    Report("opened", std::to_string(HostRate()));
    if (Fitted && Powered) {
        Fitted->PortOpened();
    }
}

void Line::BecomeClosed() {
    if (!Open) {
        return;
    }
    if (Master >= 0) {
        ReadMaster();
        Loop.Unwatch(Master);
    }
    Open = false;
    Report("closed", "");
    if (Fitted && Powered) {
        Fitted->PortClosed();
    }
    if (Master >= 0 && HungUp()) {
        ForgetUnread();
    }
}

void Line::ForgetUnread() {
    // Only the other end can throw its input away; our own visit there must not be taken for an opening.
    inotify_rm_watch(Notices, DeviceWatch);
    const int slave = open(SlaveName.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (slave >= 0) {
        tcflush(slave, TCIFLUSH);
        close(slave);
    }
    WatchDevice();
}

void Line::ReadMaster() {
    std::array<std::uint8_t, 4096> buffer;
    for (ssize_t got; (got = read(Master, buffer.data(), buffer.size())) > 0;) {
        const std::span<const std::uint8_t> bytes(buffer.data(), static_cast<std::size_t>(got));
        const unsigned host = HostRate();
        const bool heard = Powered && host == ReaderRate;
        if (WireShown) {
            Print((heard ? "rx " : "rx-lost ") + PortName + ' ' + HexText(bytes));
        }
        if (heard && Fitted) {
            Fitted->Receive(bytes);
        } else if (Powered && Fitted) {
            Report("wrong-speed", "host=" + std::to_string(host) + " reader=" + std::to_string(ReaderRate) +
                                      " bytes=" + std::to_string(got));
        }
        if (Master < 0) {
            return;
        }
    }
}

void Line::Send(Bytes message) {
    if (!Powered || message.empty()) {
        return;
    }
    if (!Held.empty()) {
        message.insert(message.begin(), Held.begin(), Held.end());
        Held.clear();
    }
    if (Armed.Take("join")) {
        Held = std::move(message);
        return;
    }
    if (Armed.Take("mute")) {
        Print("lost " + PortName + " mute " + HexText(message));
        return;
    }
    if (const auto values = Armed.Take("flip")) {
        const auto offset = NumberOf(values->front()).value_or(0);
        if (offset < message.size()) {
            message[offset] ^= 0xFF;
        }
    }
    if (const auto values = Armed.Take("late")) {
        Outgoing.push_back({.Pause = Milliseconds(NumberOf(values->front()).value_or(0))});
    }
    const auto split = Armed.Take("split");
    const std::size_t at = split ? NumberOf(split->at(0)).value_or(0) : 0;
    if (split && at > 0 && at < message.size()) {
        const auto middle = message.begin() + static_cast<std::ptrdiff_t>(at);
        Outgoing.push_back({.Message = Bytes(message.begin(), middle)});
        Outgoing.push_back({.Pause = Milliseconds(NumberOf(split->at(1)).value_or(0))});
        Outgoing.push_back({.Message = Bytes(middle, message.end())});
    } else {
        Outgoing.push_back({.Message = std::move(message)});
    }
    Pump();
}

void Line::WhenSent(std::function<void()> action) {
    Outgoing.push_back({.Action = std::move(action)});
    Pump();
}

void Line::DropQueue() {
    Outgoing.clear();
    Held.clear();
    Cancel(Pending);
    Pending = 0;
}

void Line::Pump() {
    while (Pending == 0 && !Outgoing.empty()) {
        Item& next = Outgoing.front();
        if (next.Action) {
            const auto action = std::move(next.Action);
            Outgoing.pop_front();
            action();
            continue;
        }
        if (next.Message.empty()) {
            Pending = After(next.Pause, [this] {
                Pending = 0;
                Outgoing.pop_front();
                Pump();
            });
            return;
        }
        const std::size_t count = std::min(Burst, next.Message.size() - next.Done);
        LineFree =
            std::max(LineFree, Clock::now()) + std::chrono::microseconds(count * 10'000'000 / ReaderRate);
        Pending = Loop.At(LineFree, [this] {
            Pending = 0;
            SendBurst();
            Pump();
        });
    }
}

void Line::SendBurst() {
    Item& item = Outgoing.front();
    const std::size_t count = std::min(Burst, item.Message.size() - item.Done);
    Bytes burst(item.Message.begin() + static_cast<std::ptrdiff_t>(item.Done),
                item.Message.begin() + static_cast<std::ptrdiff_t>(item.Done + count));
    item.Done += count;
    bool arrives = Open && Master >= 0;
    if (!arrives) {
        item.Lost = "closed";
    } else if (HostRate() != ReaderRate) {
        item.Lost = "speed";
        arrives = Armed.Take("garbage").has_value();
        for (std::uint8_t& byte : burst) {
            byte = static_cast<std::uint8_t>((byte << 3 | 0x85) ^ (byte >> 2));
        }
    }
    if (arrives && write(Master, burst.data(), burst.size()) != static_cast<ssize_t>(burst.size())) {
        item.Lost = "overrun";
    }
    if (item.Done == item.Message.size()) {
        FinishMessage();
    }
}

void Line::FinishMessage() {
    const Item item = std::move(Outgoing.front());
    Outgoing.pop_front();
    if (item.Lost) {
        Print("lost " + PortName + ' ' + item.Lost + ' ' + HexText(item.Message));
    } else if (WireShown) {
        Print("tx " + PortName + ' ' + HexText(item.Message));
    }
}

void Line::SetRate(unsigned rate) {
    if (rate != ReaderRate) {
        ReaderRate = rate;
        Report("rate", std::to_string(rate));
    }
}

TimerId Line::After(Milliseconds delay, std::function<void()> action) {
    return Loop.At(Clock::now() + delay, std::move(action));
}

void Line::Cancel(TimerId timer) {
    Loop.Cancel(timer);
}

void Line::Report(std::string_view name, std::string_view details) {
    Out.Event(name, PortName, details);
}

void Line::Print(std::string_view line) {
    Out.Print(line);
}

void Line::SetPower(bool on) {
    if (on == Powered) {
        return;
    }
    Powered = on;
    DropQueue();
    Report("power", on ? "on" : "off");
    if (Fitted) {
        on ? Fitted->PowerOn() : Fitted->PowerOff();
    }
}

std::string Line::State() const {
    return "line " + PortName + " device=" + (Plugged() ? SlaveName : "none") +
           " port=" + (Open ? "open" : "closed") + " host-rate=" + std::to_string(HostRate()) +
           " reader-rate=" + std::to_string(ReaderRate) + " power=" + (Powered ? "on" : "off");
}

}  // namespace readers
