// The 1D reader with its own decoder.
#pragma once

#include "simulator/boot_loader.h"
#include "simulator/escape_wire.h"
#include "simulator/label_tray.h"
#include "simulator/wire.h"

namespace readers {

class Decoder1D : public Reader {
  public:
    Decoder1D(Wire& wire, std::function<void()> powerLoss);

    void Receive(std::span<const std::uint8_t> bytes) override;
    void PowerOff() override;
    void PowerOn() override;
    bool Command(std::string_view word, std::string_view rest, std::string& problem) override;
    std::vector<std::string> State() const override;
    std::vector<std::string> Parameters() const override;

    const MemoryImage& Memory() const { return Loader.Memory(); }

  private:
    enum class Mode { Running, Loading, Restarting };

    void HandleCommand(const std::string& command);
    void Save(const std::string& digits);
    void LookForLabel();
    void Decode();
    void EndReading();
    void Restart();
    void Boot();

    Wire& Link;
    EscapeReceiver Incoming;
    LabelTray Labels;
    BootLoader Loader;
    Mode Now = Mode::Running;
    Bytes Block;  // the parameters, kept without power
    Bytes Version;
    bool Reading = false;
    unsigned Decodes = 0;
    Milliseconds DecodeTime{60};
    Milliseconds RestartTime{2000};
    Timer Silence;
    Timer Session;
    Timer Decoder;
    Timer Restarter;
};

}  // namespace readers
