#include "simulator/boot_loader.h"

#include <array>
#include <cstdio>

namespace readers {
namespace {

constexpr Milliseconds FrameGap{500};

}  // namespace

BootLoader::BootLoader(Wire& wire, std::function<void()> loaded, std::function<void()> powerLoss)
    : Link(wire),
      OnLoaded(std::move(loaded)),
      OnPowerLoss(std::move(powerLoss)),
      Silence(wire),
      Eraser(wire) {}

void BootLoader::Reset() {
    Incoming.Abandon();
    Silence.Stop();
    Eraser.Stop();
    Now = Phase::AwaitRaw;
}

void BootLoader::Enter() {
    Reset();
    if (Link.Faults().Take("download-refuse")) {
        Say("NG\r");
        return;
    }
    Link.Report("download-mode");
    Say("OK\r");
}

void BootLoader::Receive(std::span<const std::uint8_t> bytes) {
    for (const LoaderReceived& received : Incoming.Push(bytes)) {
        Handle(received);
    }
    Silence.Stop();
    if (Incoming.Waiting()) {
        Silence.Start(FrameGap, [this] {
            if (const auto left = Incoming.Abandon()) {
                Handle(*left);
            }
        });
    }
}

void BootLoader::Handle(const LoaderReceived& received) {
    switch (received.What) {
        case LoaderReceived::Framed:
            if (received.Content == "DOWNLOAD") {
                Enter();
            } else {
                Link.Report("ignored", received.Content);
            }
            break;
        case LoaderReceived::Text:
            HandleText(received.Content);
            break;
        case LoaderReceived::Frame:
        case LoaderReceived::BadFrame:
            HandleFrame(received);
            break;
        case LoaderReceived::Noise:
            Link.Report("noise", HexText(BytesOf(received.Content)));
            break;
    }
}

void BootLoader::HandleText(const std::string& text) {
    if (text == "DOWNLOAD" && (Now == Phase::AwaitRaw || Now == Phase::AwaitErase)) {
        if (Link.Faults().Take("raw-silent")) {
            return;
        }
        if (Link.Faults().Take("raw-refuse")) {
            Say("NG\r");
            return;
        }
        Now = Phase::AwaitErase;
        Say("FN\r");
    } else if (text == ":ERASE" && (Now == Phase::AwaitErase || Now == Phase::Receiving)) {
        Erase();
    } else {
        Link.Report("refused", text);
        Say("NG\r");
    }
}

void BootLoader::Erase() {
    FaultSet& faults = Link.Faults();
    if (faults.Take("erase-silent")) {
        return;
    }
    if (faults.Take("erase-refuse")) {
        Say("NG\r");
        return;
    }
    Flash.Clear();
    Incomplete = true;
    Frames = 0;
    Refused = 0;
    Link.Report("erase");
    Now = Phase::Erasing;
    if (faults.Take("erase-no-fa")) {
        Say("FB\r");
        return;
    }
    if (faults.Take("erase-no-fb")) {
        Say("FA\r");
    } else if (EraseTime.count() == 0) {
        Say("FB\rFA\r");
    } else {
        Say("FB\r");
        Eraser.Start(EraseTime, [this] {
            Now = Phase::Receiving;
            Link.Report("erased");
            Link.Send(BytesOf("FA\r"));
        });
        return;
    }
    Now = Phase::Receiving;
    Link.Report("erased");
}

// True when a fault has dealt with the frame.
bool BootLoader::FrameFault() {
    FaultSet& faults = Link.Faults();
    if (faults.Take("power-loss")) {
        OnPowerLoss();
        return true;
    }
    if (faults.Take("frame-silent")) {
        return true;
    }
    if (const auto values = faults.Take("frame-text")) {
        Say(values->front() + "\r");
        return true;
    }
    for (const auto& [fault, reply] : {std::pair("frame-fb", "FB\r"), std::pair("frame-fn", "FN\r")}) {
        if (faults.Take(fault)) {
            Say(reply);
            return true;
        }
    }
    return false;
}

void BootLoader::HandleFrame(const LoaderReceived& frame) {
    if (Now != Phase::Receiving) {
        Link.Report("refused", "frame");
        Say("NG\r");
        return;
    }
    if (frame.What == LoaderReceived::BadFrame) {
        ++Refused;
        Link.Report("bad-frame", frame.Content);
        Say("FN\r");
        return;
    }
    std::array<char, 64> place{};
    std::snprintf(place.data(), place.size(), "type=%c address=%08X length=%zu", frame.Type,
                  static_cast<unsigned>(frame.Address), frame.Data.size());
    if (frame.Type == '7') {
        Link.Report("end-frame", place.data());
        Now = Phase::Done;
        Incomplete = Flash.Empty();
        if (!Link.Faults().Take("end-silent")) {
            Say("FA\r");
        }
        Link.WhenSent(OnLoaded);
        return;
    }
    if (FrameFault()) {
        return;
    }
    std::size_t changed = 0;
    if (!Flash.Write(frame.Address, frame.Data, changed)) {
        ++Refused;
        Link.Report("bad-frame", "address");
        Say("FN\r");
        return;
    }
    ++Frames;
    Link.Report("frame", place.data());
    if (changed != 0) {
        Link.Report("overwritten", std::to_string(changed));
    }
    Say("FA\r");
}

std::string BootLoader::State() const {
    constexpr std::array Names = {"await-raw", "await-erase", "erasing", "receiving", "done"};
    return std::string("loader phase=") + Names[static_cast<std::size_t>(Now)] +
           " frames=" + std::to_string(Frames) + " bad-frames=" + std::to_string(Refused) +
           " damaged=" + (Incomplete ? "yes" : "no");
}

}  // namespace readers
