// The RFID reader, model 90 or 100. It gets its power when the terminal opens its port, and announces itself.
#pragma once

#include <map>

#include "simulator/rfid_wire.h"
#include "simulator/tag.h"
#include "simulator/wire.h"

namespace readers {

class RfidReader : public Reader {
  public:
    RfidReader(Wire& wire, bool multi);

    void Receive(std::span<const std::uint8_t> bytes) override;
    void PortOpened() override;
    void PortClosed() override;
    void PowerOff() override;
    void PowerOn() override {}
    bool Command(std::string_view word, std::string_view rest, std::string& problem) override;
    std::vector<std::string> State() const override;
    std::vector<std::string> Parameters() const override;

  private:
    void Handle(const RfidReceived& command);
    void Search();
    void Report();
    void ReadRegister(std::uint8_t number);
    bool RegisterFault(std::uint8_t number);
    void Rest();
    void SayLine(std::string_view text);
    bool PresentTag(std::string_view rest);
    bool SetBlock(std::string_view rest);

    Wire& Link;
    const bool Multi;
    Bytes Version;
    RfidReceiver Incoming;
    std::map<std::uint8_t, std::uint8_t> SetUp;  // registers, kept without power
    std::optional<Tag> InField;
    std::optional<Bytes> Line;                // reported in place of a tag, as it is
    std::map<std::uint32_t, char> BadBlocks;  // blocks that always fail, and the answer
    bool Selected = false;                    // the tag in the field has been reported
    bool Searching = false;
    unsigned AnnounceAt = 1;  // the opening that is announced, 0 for none
    unsigned Openings = 0;
    unsigned Reads = 0;
    Milliseconds AnnounceTime{40};
    Milliseconds SearchTime{60};
    Milliseconds RepeatTime{0};  // a search without a tag says S after this long; 0: never
    Timer Silence;
    Timer Announcement;
    Timer Finder;
    Timer Repeater;
};

}  // namespace readers
