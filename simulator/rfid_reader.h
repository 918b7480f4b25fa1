// The RFID reader.
#pragma once

#include "simulator/wire.h"

namespace readers {

class RfidReader : public Reader {
  public:
    RfidReader(Wire& wire, bool multi) : Link(wire), Multi(multi) {}
    void Receive(std::span<const std::uint8_t>) override {}
    void PowerOff() override {}
    void PowerOn() override {}
    bool Command(std::string_view, std::string_view, std::string&) override { return false; }
    std::vector<std::string> State() const override { return {Multi ? "reader rfid 100" : "reader rfid 90"}; }
    std::vector<std::string> Parameters() const override { return {}; }

  private:
    Wire& Link;
    bool Multi;
};

}  // namespace readers
