// The two packet readers: the long-range laser and the 2D imager.
#pragma once

#include <map>

#include "simulator/label_tray.h"
#include "simulator/ssi_wire.h"
#include "simulator/wire.h"

namespace readers {

enum class EngineModel { Laser, Imager };

class ScanEngine : public Reader {
  public:
    ScanEngine(Wire& wire, EngineModel model);

    void Receive(std::span<const std::uint8_t> bytes) override;
    void PowerOff() override;
    void PowerOn() override {}
    bool Command(std::string_view word, std::string_view rest, std::string& problem) override;
    std::vector<std::string> State() const override;
    std::vector<std::string> Parameters() const override;

  private:
    // A decode on its way to the other side, packet by packet.
    struct Transmission {
        std::vector<Bytes> Packets;
        std::size_t Next = 0;
        int Tries = 0;
    };

    void HandlePacket(std::span<const std::uint8_t> packet);
    void AnswerAck();
    void AnswerNak(std::uint8_t cause);
    void SetDefaults();
    void TakeParameters(std::span<const std::uint8_t> packet);
    void Start();
    void Stop();
    void EndDecoding();
    void LookForLabel();
    void Decode();
    void SendNextPacket();
    void Resend(std::string_view why);
    void Acknowledged();
    Milliseconds SessionTime() const;

    Wire& Link;
    const EngineModel Model;
    SsiReceiver Incoming;
    LabelTray Labels;
    std::map<std::uint16_t, std::uint8_t> Held;  // parameters that were sent since the defaults
    Bytes Revision;
    std::optional<Transmission> Sending;
    bool Decoding = false;
    bool Aiming = false;
    std::size_t PacketData = LargestPacketData;
    Milliseconds DecodeTime{60};
    Milliseconds AckTime{1000};
    unsigned Decodes = 0;
    Timer Silence;
    Timer Session;
    Timer Decoder;
    Timer AckWait;
};

}  // namespace readers
