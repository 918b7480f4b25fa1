#include "platform/linux/serial/tty_line.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#ifndef TIOCSER_TEMT
#define TIOCSER_TEMT 0x01  // the transmitter is empty, shift register included
#endif

namespace layer {
namespace {

struct SpeedCode {
    DWORD speed;
    speed_t code;
};
constexpr SpeedCode Speeds[] = {{1200, B1200},     {2400, B2400},     {4800, B4800},     {9600, B9600},
                                {19200, B19200},   {38400, B38400},   {57600, B57600},   {115200, B115200},
                                {230400, B230400}, {460800, B460800}, {500000, B500000}, {576000, B576000},
                                {921600, B921600}};

constexpr unsigned FirstPseudoMajor = 136, LastPseudoMajor = 143;
constexpr DWORD BitsPerByte = 10;  // start bit, eight data bits, stop bit
constexpr DWORD Slack = 20;        // milliseconds for the driver's own queues

const SpeedCode* FindSpeed(DWORD speed) {
    const auto* found = std::find_if(std::begin(Speeds), std::end(Speeds),
                                     [&](const SpeedCode& s) { return s.speed == speed; });
    return found == std::end(Speeds) ? nullptr : found;
}

bool IsPseudoTerminal(int fd) {
    struct stat status {};
    return fstat(fd, &status) == 0 && S_ISCHR(status.st_mode) && major(status.st_rdev) >= FirstPseudoMajor &&
           major(status.st_rdev) <= LastPseudoMajor;
}

constexpr int HowToOpen = O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

bool IsNothing(int fd) {
    struct stat nothing {
    }, status{};
    return stat("/dev/null", &nothing) == 0 && fstat(fd, &status) == 0 && S_ISCHR(status.st_mode) &&
           status.st_rdev == nothing.st_rdev;
}

// Opens a pseudo-terminal; its other end, or -1.
int OpenSilentLine(int& fd) {
    const int otherEnd = posix_openpt(HowToOpen);
    char name[64];
    if (otherEnd < 0 || grantpt(otherEnd) != 0 || unlockpt(otherEnd) != 0 ||
        ptsname_r(otherEnd, name, sizeof name) != 0 || (fd = open(name, HowToOpen)) < 0) {
        close(otherEnd);
        return -1;
    }
    return otherEnd;
}

void Pause(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace

std::uint64_t LinkIdentity(std::string path) {
    constexpr int MostLinks = 16;
    std::uint64_t identity = 14695981039346656037u;
    struct stat status {};
    for (int i = 0; i < MostLinks && lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode); ++i) {
        for (const std::uint64_t part :
             {static_cast<std::uint64_t>(status.st_ino), static_cast<std::uint64_t>(status.st_ctim.tv_sec),
              static_cast<std::uint64_t>(status.st_ctim.tv_nsec)}) {
            identity = (identity ^ part) * 1099511628211u;
        }
        std::error_code ignored;
        path = std::filesystem::path(path).parent_path() / std::filesystem::read_symlink(path, ignored);
    }
    return identity;
}

bool KnownSpeed(DWORD speed) {
    return FindSpeed(speed) != nullptr;
}

std::shared_ptr<TtyLine> TtyLine::Open(const std::string& path, DWORD speed) {
    int fd = open(path.c_str(), HowToOpen);
    int otherEnd = -1;
    if (IsNothing(fd)) {
        close(std::exchange(fd, -1));
        otherEnd = OpenSilentLine(fd);
    }
    if (fd < 0) {
        return nullptr;
    }
    std::shared_ptr<TtyLine> line(new TtyLine(fd, IsPseudoTerminal(fd), otherEnd));
    if (!isatty(fd) || flock(fd, LOCK_EX | LOCK_NB) != 0) {
        return nullptr;
    }
    // On a pseudo-terminal the exclusive mark outlives the close and locks an ordinary user out for good.
    if (!line->pseudo_) {
        ioctl(fd, TIOCEXCL);
    }
    if (!line->Configure(speed)) {
        line->Unlock();
        return nullptr;
    }
    return line;
}

TtyLine::~TtyLine() {
    close(fd_);
    if (otherEnd_ >= 0) {
        close(otherEnd_);
    }
}

bool TtyLine::Configure(DWORD speed) {
    termios settings{};
    if (tcgetattr(fd_, &settings) != 0) {
        return false;
    }
    cfmakeraw(&settings);
    settings.c_iflag &= ~static_cast<tcflag_t>(IGNPAR | INPCK | IXOFF | IXANY);
    settings.c_iflag |= PARMRK;  // with BRKINT and IGNBRK off, a break shows as FF 00 00
    settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    settings.c_cflag |= CREAD | CLOCAL | HUPCL;
    settings.c_cc[VMIN] = 1;  // so that a read of nothing means a line that has gone
    settings.c_cc[VTIME] = 0;
    if (const SpeedCode* code = FindSpeed(speed)) {
        cfsetspeed(&settings, code->code);
    }
    return tcsetattr(fd_, TCSANOW, &settings) == 0;
}

DWORD TtyLine::Speed() const {
    termios settings{};
    if (tcgetattr(fd_, &settings) != 0) {
        return 0;
    }
    const auto found =
        std::find_if(std::begin(Speeds), std::end(Speeds),
                     [code = cfgetospeed(&settings)](const SpeedCode& s) { return s.code == code; });
    return found != std::end(Speeds) ? found->speed : 0;
}

bool TtyLine::SetSpeed(DWORD speed) {
    const SpeedCode* code = FindSpeed(speed);
    termios settings{};
    if (code == nullptr || tcgetattr(fd_, &settings) != 0) {
        return false;
    }
    if (cfgetospeed(&settings) == code->code && cfgetispeed(&settings) == code->code) {
        return true;
    }
    cfsetspeed(&settings, code->code);
    // tcsetattr is content when any part of the wish came true: ask what became of the speed.
    return tcsetattr(fd_, TCSANOW, &settings) == 0 && Speed() == speed;
}

void TtyLine::SetModemLines(bool dtr, bool rts) {
    if (pseudo_) {
        return;
    }
    int on = (dtr ? TIOCM_DTR : 0) | (rts ? TIOCM_RTS : 0);
    int off = (TIOCM_DTR | TIOCM_RTS) & ~on;
    ioctl(fd_, TIOCMBIC, &off);
    ioctl(fd_, TIOCMBIS, &on);
}

bool TtyLine::SetBreak(bool on) {
    return !pseudo_ && ioctl(fd_, on ? TIOCSBRK : TIOCCBRK) == 0;
}

void TtyLine::DiscardInput() {
    tcflush(fd_, TCIFLUSH);
}

void TtyLine::DiscardOutput() {
    // What was written to a pseudo-terminal has left: only a line has an output queue.
    if (!pseudo_) {
        tcflush(fd_, TCOFLUSH);
    }
    // Nobody else takes it there, and it would fill up.
    char dropped[256];
    while (otherEnd_ >= 0 && read(otherEnd_, dropped, sizeof dropped) > 0) {
    }
}

DWORD TtyLine::Queued() const {
    int bytes = 0;
    return ioctl(fd_, TIOCOUTQ, &bytes) == 0 && bytes > 0 ? static_cast<DWORD>(bytes) : 0;
}

DWORD TtyLine::LineTime(DWORD bytes) const {
    const DWORD speed = std::max<DWORD>(Speed(), 1200);
    const std::uint64_t bits = (std::uint64_t{bytes} + Queued()) * BitsPerByte;
    return static_cast<DWORD>(std::min<std::uint64_t>(bits * 1000 / speed + Slack, 60000));
}

void TtyLine::WaitSent() const {
    if (pseudo_) {
        return;
    }
    using Steady = std::chrono::steady_clock;
    const auto deadline = Steady::now() + std::chrono::milliseconds(LineTime(0) + 100);
    while (Queued() > 0 && Steady::now() < deadline) {
        Pause(1);
    }
    unsigned status = 0;
    if (ioctl(fd_, TIOCSERGETLSR, &status) != 0) {
        // Many USB adapters do not tell; they hold at most a few bytes back.
        Pause(2 * BitsPerByte * 1000 / std::max<DWORD>(Speed(), 1200) + 1);
        return;
    }
    while ((status & TIOCSER_TEMT) == 0 && Steady::now() < deadline) {
        Pause(1);
        if (ioctl(fd_, TIOCSERGETLSR, &status) != 0) {
            return;
        }
    }
}

void TtyLine::Unlock() {
    if (!pseudo_) {
        ioctl(fd_, TIOCNXCL);
    }
    flock(fd_, LOCK_UN);
}

}  // namespace layer
