// A pseudo-terminal linked into the terminal folder as a port; the test plays the reader on its master.
#pragma once

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "platform/base.h"

class PseudoTerminal {
  public:
    PseudoTerminal() {
        char name[64];
        int slave = -1;
        if (openpty(&master_, &slave, name, nullptr, nullptr) != 0)
            throw std::runtime_error("no pseudo-terminal");
        close(slave);
        slave_ = name;
    }
    ~PseudoTerminal() { CloseMaster(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Makes `link` (a path) lead to this terminal, whatever it led to before.
    void LinkAs(const std::string& link) const {
        unlink(link.c_str());
        if (symlink(slave_.c_str(), link.c_str()) != 0)
            throw std::runtime_error("no link " + link);
    }
    void Send(const std::vector<BYTE>& bytes) { Send(std::string(bytes.begin(), bytes.end())); }
    void Send(const std::string& text) {
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t put = write(master_, text.data() + sent, text.size() - sent);
            if (put < 0)
                throw std::runtime_error("the pseudo-terminal takes nothing");
            sent += static_cast<std::size_t>(put);
        }
    }
    // What the port has written, up to so many bytes; ends early after two seconds without one.
    std::vector<BYTE> Receive(std::size_t count) {
        std::vector<BYTE> bytes(count);
        std::size_t got = 0;
        pollfd file{master_, POLLIN, 0};
        while (got < count && poll(&file, 1, 2000) > 0) {
            const ssize_t more = read(master_, bytes.data() + got, count - got);
            if (more <= 0)
                break;
            got += static_cast<std::size_t>(more);
        }
        bytes.resize(got);
        return bytes;
    }
    // The line speed that the other side has set, as its code of <termios.h>.
    unsigned SpeedCode() const {
        termios settings{};
        tcgetattr(master_, &settings);
        return cfgetospeed(&settings);
    }
    // The reader is unplugged.
    void CloseMaster() {
        if (master_ >= 0)
            close(master_);
        master_ = -1;
    }

  private:
    int master_ = -1;
    std::string slave_;
};
