#include "tests/platform/pseudo_terminal.h"

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>

PseudoTerminal::PseudoTerminal() {
    char name[64];
    int slave = -1;
    if (openpty(&master_, &slave, name, nullptr, nullptr) != 0)
        throw std::runtime_error("no pseudo-terminal");
    close(slave);
    slave_ = name;
}

void PseudoTerminal::LinkAs(const std::string& link) const {
    unlink(link.c_str());
    if (symlink(slave_.c_str(), link.c_str()) != 0)
        throw std::runtime_error("no link " + link);
}

void PseudoTerminal::Send(const std::vector<BYTE>& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t put = write(master_, bytes.data() + sent, bytes.size() - sent);
        if (put < 0)
            throw std::runtime_error("the pseudo-terminal takes nothing");
        sent += static_cast<std::size_t>(put);
    }
}

std::vector<BYTE> PseudoTerminal::Receive(std::size_t count, int milliseconds) {
    std::vector<BYTE> bytes;
    while (bytes.size() < count) {
        pollfd file{master_, POLLIN, 0};
        BYTE chunk[512];
        if (poll(&file, 1, milliseconds) <= 0)
            break;
        const ssize_t got = read(master_, chunk, std::min(sizeof chunk, count - bytes.size()));
        if (got <= 0)
            break;
        bytes.insert(bytes.end(), chunk, chunk + got);
    }
    return bytes;
}

unsigned PseudoTerminal::SpeedCode() const {
    termios settings{};
    tcgetattr(master_, &settings);
    return cfgetospeed(&settings);
}

void PseudoTerminal::CloseMaster() {
    if (master_ >= 0)
        close(master_);
    master_ = -1;
}
