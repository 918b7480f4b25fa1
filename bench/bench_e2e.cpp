// From the last byte of a label on the wire to its first key event, through the real program. The reader is a
// pseudo-terminal in this program's hands, so that the moment of the last byte is known; the keys come
// through the trace keyboard. With --check the best figure must keep within 5 ms of what the program waits by
// rule.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "settings/settings_file.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_terminal.h"

namespace {

using Clock = std::chrono::steady_clock;

// What the program waits by rule, in milliseconds: a packet ends with a pause; its acknowledgement, which
// leaves before the scan is delivered, has RTS raised before and held after it.
constexpr double MessageGap = 30, RtsLead = 100, RtsHold = 50;
constexpr double ByRule = MessageGap + RtsLead + RtsHold;
constexpr double Allowed = 5;
constexpr int Scans = 40;
constexpr int DecodeTime = 60;

std::vector<BYTE> Packet(std::vector<BYTE> bytes) {
    unsigned sum = 0;
    bytes.insert(bytes.begin(), static_cast<BYTE>(bytes.size() + 1));
    for (const BYTE byte : bytes) {
        sum += byte;
    }
    sum = 0x10000 - sum;
    bytes.push_back(static_cast<BYTE>(sum >> 8));
    bytes.push_back(static_cast<BYTE>(sum));
    return bytes;
}

// A long-range laser that decodes one label for each start.
class Laser {
  public:
    explicit Laser(const TemporaryTerminal& terminal) {
        char name[128];
        if (openpty(&master_, &slave_, name, nullptr, nullptr) != 0 ||
            symlink(name, terminal.Path("COM1").c_str()) != 0) {
            std::perror("COM1");
            std::exit(1);
        }
        termios raw{};
        tcgetattr(slave_, &raw);
        cfmakeraw(&raw);
        tcsetattr(slave_, TCSANOW, &raw);
    }
    int File() const { return master_; }
    int Starts() const { return starts_; }
    int Stops() const { return stops_; }

    // Takes what has arrived and acknowledges whole commands.
    void Listen() {
        BYTE chunk[512];
        const ssize_t count = read(master_, chunk, sizeof chunk);
        pending_.insert(pending_.end(), chunk, chunk + std::max<ssize_t>(count, 0));
        while (pending_.size() > 1 && pending_.size() >= pending_[0] + 2u) {
            const BYTE opcode = pending_[1];
            starts_ += opcode == 0xE4;
            stops_ += opcode == 0xE5;
            pending_.erase(pending_.begin(), pending_.begin() + pending_[0] + 2);
            if (opcode != 0xD0) {
                Send(Packet({0xD0, 0x00, 0x00}));
            }
        }
    }
    // The moment after the last byte.
    Clock::time_point SendLabel() {
        Send(Packet({0xF3, 0x00, 0x00, 0x01, 'A', 'B', '1', '2'}));
        return Clock::now();
    }

  private:
    void Send(const std::vector<BYTE>& bytes) {
        if (write(master_, bytes.data(), bytes.size()) < 0) {
            std::perror("write");
        }
    }

    int master_ = -1, slave_ = -1;
    int starts_ = 0, stops_ = 0;
    std::vector<BYTE> pending_;
};

void Trigger(const char* action) {
    ChildProcess({"/bin/sh", "-c",
                  std::string("exec " VANTREL_PROGRAMS "/vantrel-trigger ") + action + " 2>/dev/null"})
        .Wait();
}

// Serves the reader until the condition holds; false after the time.
template <class Condition>
bool Serve(Laser& laser, int milliseconds, const Condition& condition) {
    const auto until = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        pollfd file{laser.File(), POLLIN, 0};
        if (Clock::now() >= until) {
            return false;
        }
        if (poll(&file, 1, 10) > 0) {
            laser.Listen();
        }
    }
    return true;
}

// Milliseconds from the label's last byte to the first key event; below 0 when none came.
double MeasureOne(Laser& laser, int keys) {
    const int before = laser.Starts();
    Trigger("down");
    if (!Serve(laser, 500, [&] { return laser.Starts() > before; })) {
        return -1;  // the last scan is still busy
    }
    Serve(laser, DecodeTime, [] { return false; });
    const auto sent = laser.SendLabel();
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
    DeviceFlags = DeviceLaser;
    ResetSettings(ResetAllGroups);
    SetValue(general::CheckReaderStatus, '0');
    SaveSettings();
    // A pipe in place of a file: an event can be waited for.
    const std::string pipe = terminal.Path("keys");
    mkfifo(pipe.c_str(), 0600);
    const int keys = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);

    ChildProcess program({VANTREL_PROGRAMS "/vantrel"},
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
