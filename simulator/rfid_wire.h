// The plain text of the RFID reader: commands without any end, answers in lines that end CR LF.
#pragma once

#include "simulator/bytes.h"

namespace readers {

struct RfidReceived {
    enum Kind {
        Version,   // v
        Wake,      // .
        Restart,   // x
        Search,    // s
        Register,  // rNN: read a block
        Write,     // wpNNVV: write a set-up register
        Noise
    } What;
    std::uint8_t Number = 0;  // Register, Write
    std::uint8_t Value = 0;   // Write
    std::string Text{};       // the characters themselves
};

// Finds commands in what arrives, however it is cut.
class RfidReceiver {
  public:
    std::vector<RfidReceived> Push(std::span<const std::uint8_t> bytes);
    // The line fell silent: what was begun and not finished.
    std::string Abandon();
    bool Waiting() const { return !Pending.empty(); }

  private:
    std::string Pending;
};

}  // namespace readers
