// What the 1D reader's boot loader hears: raw text commands, binary record frames, and framed commands.
#pragma once

#include "simulator/bytes.h"

namespace readers {

struct LoaderReceived {
    enum Kind {
        Text,      // a raw command without its CR
        Framed,    // a command in the escape framing, without ESC and CR
        Frame,     // a sound record frame
        BadFrame,  // wrong count, checksum, type or end
        Noise
    } What;
    std::string Content{};      // Text, Framed, Noise; for BadFrame what is wrong
    char Type = 0;              // Frame: '3' or '7'
    std::uint32_t Address = 0;  // Frame
    Bytes Data{};               // Frame
};

class LoaderReceiver {
  public:
    std::vector<LoaderReceived> Push(std::span<const std::uint8_t> bytes);
    // The line fell silent: what was begun and not finished, if anything.
    std::optional<LoaderReceived> Abandon();
    bool Waiting() const { return !Pending.empty(); }

  private:
    // One item from the front of Pending, if it is complete there; `used` bytes belong to it.
    std::optional<LoaderReceived> TakeOne(std::size_t& used) const;
    std::optional<LoaderReceived> TakeFrame(std::size_t& used) const;

    Bytes Pending;
};

}  // namespace readers
