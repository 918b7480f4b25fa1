#include "bench/laser.h"

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "settings/settings_file.h"

namespace {

constexpr BYTE Acknowledgement = 0xD0, Decode = 0xF3, Start = 0xE4, Stop = 0xE5;

}  // namespace

void SaveLaserSettings() {
    DeviceFlags = DeviceLaser;
    ResetSettings(ResetAllGroups);
    SetValue(general::CheckReaderStatus, '0');
    static_cast<void>(SaveSettings());  // without them no reader is found
}

Laser::Laser(const TemporaryTerminal& terminal) {
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

void Laser::Listen() {
    BYTE chunk[512];
    const ssize_t count = read(master_, chunk, sizeof chunk);
    pending_.insert(pending_.end(), chunk, chunk + std::max<ssize_t>(count, 0));
    while (pending_.size() > 1 && pending_.size() >= pending_[0] + 2u) {
        const BYTE opcode = pending_[1];
        starts_ += opcode == Start;
        stops_ += opcode == Stop;
        pending_.erase(pending_.begin(), pending_.begin() + pending_[0] + 2);
        if (opcode != Acknowledgement) {
            Send({Acknowledgement, 0x00, 0x00});
        }
    }
}

std::chrono::steady_clock::time_point Laser::SendLabel(std::string_view label) {
    std::vector<BYTE> packet{Decode, 0x00, 0x00, 0x01};
    packet.insert(packet.end(), label.begin(), label.end());
    Send(std::move(packet));
    return std::chrono::steady_clock::now();
}

void Laser::Send(std::vector<BYTE> bytes) {
    unsigned sum = 0;
    bytes.insert(bytes.begin(), static_cast<BYTE>(bytes.size() + 1));
    for (const BYTE byte : bytes) {
        sum += byte;
    }
    sum = 0x10000 - sum;
    bytes.push_back(static_cast<BYTE>(sum >> 8));
    bytes.push_back(static_cast<BYTE>(sum));
    if (write(master_, bytes.data(), bytes.size()) < 0) {
        std::perror("write");
    }
}

bool Serve(Laser& laser, int milliseconds, const std::function<bool()>& condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        pollfd file{laser.File(), POLLIN, 0};
        if (std::chrono::steady_clock::now() >= until) {
            return false;
        }
        if (poll(&file, 1, 10) > 0) {
            laser.Listen();
        }
    }
    return true;
}
