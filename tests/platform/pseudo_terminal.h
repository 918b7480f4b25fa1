// A pseudo-terminal linked into the terminal folder as a port; the test plays the reader on its master.
#pragma once

#include <string>
#include <vector>

#include "platform/base.h"

class PseudoTerminal {
  public:
    PseudoTerminal();
    ~PseudoTerminal() { CloseMaster(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Makes `link` (a path) lead to this terminal, whatever it led to before.
    void LinkAs(const std::string& link) const;
    void Send(const std::vector<BYTE>& bytes);
    void Send(const std::string& text) { Send(std::vector<BYTE>(text.begin(), text.end())); }
    // What the port has written, up to so many bytes; ends early after `milliseconds` without one.
    std::vector<BYTE> Receive(std::size_t count, int milliseconds = 2000);
    // The line speed that the other side has set, as its code of <termios.h>.
    unsigned SpeedCode() const;
    // The reader is unplugged.
    void CloseMaster();

  private:
    int master_ = -1;
    std::string slave_;
};
