// The boot loader of the 1D reader's decoder: erases the flash memory and takes a new firmware into it.
#pragma once

#include "simulator/loader_wire.h"
#include "simulator/memory_image.h"
#include "simulator/wire.h"

namespace readers {

class BootLoader {
  public:
    // `loaded` runs when the end frame has been answered; `powerLoss` when the fault of that name strikes.
    BootLoader(Wire& wire, std::function<void()> loaded, std::function<void()> powerLoss);

    // The framed DOWNLOAD came; answers it.
    void Enter();
    void Receive(std::span<const std::uint8_t> bytes);
    // Forgets where the conversation stood. The memory stays.
    void Reset();

    const MemoryImage& Memory() const { return Flash; }
    // Something has been erased and not loaded whole since.
    bool Damaged() const { return Incomplete; }
    void SetEraseTime(Milliseconds time) { EraseTime = time; }
    std::string State() const;

  private:
    enum class Phase { AwaitRaw, AwaitErase, Erasing, Receiving, Done };

    void Handle(const LoaderReceived& received);
    void HandleText(const std::string& text);
    void Erase();
    void HandleFrame(const LoaderReceived& frame);
    bool FrameFault();
    void Say(std::string_view text) { Link.Answer(BytesOf(text)); }

    Wire& Link;
    const std::function<void()> OnLoaded;
    const std::function<void()> OnPowerLoss;
    LoaderReceiver Incoming;
    MemoryImage Flash;
    Phase Now = Phase::AwaitRaw;
    bool Incomplete = false;
    std::size_t Frames = 0;
    std::size_t Refused = 0;
    Milliseconds EraseTime{0};
    Timer Silence;
    Timer Eraser;
};

}  // namespace readers
