// What passes on the serial lines, written down as it passes; docs/wire-traces.md has the form. Any thread.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/base.h"

namespace layer {

class WireTrace {
  public:
    // The trace of the port in the file that VANTREL_TRACE names; null where it names none, or where it
    // cannot be written, which is said.
    static std::unique_ptr<WireTrace> Of(std::string_view port);

    void Sent(std::span<const BYTE> bytes) { Bytes('>', bytes); }
    void Received(std::span<const BYTE> bytes) { Bytes('<', bytes); }
    // "open", "close", "rate 115200", "rts on", "break off", "lost", "back".
    void Changed(std::string_view what);

  private:
    explicit WireTrace(std::string_view port) : port_(port) {}
    void Bytes(char direction, std::span<const BYTE> bytes);

    const std::string port_;
};

}  // namespace layer
