// A pseudo-terminal that stands for a COM port: its link, who has it open, and at which speed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "simulator/bytes.h"
#include "simulator/event_loop.h"

namespace readers {

class PseudoTerminal {
  public:
    // What happens at the other end. Bytes that were written before a close arrive before it.
    struct Handlers {
        std::function<void()> Opened;
        std::function<void()> Closed;
        std::function<void(std::span<const std::uint8_t>)> Received;
    };

    // `link` is the name under which the terminal finds the port.
    PseudoTerminal(EventLoop& loop, std::filesystem::path link, Handlers handlers);
    ~PseudoTerminal();

    // Makes the device and its link. False with `problem` set when that fails; nothing is left then.
    bool Plug(std::string& problem);
    // Takes both away, as when a cable is pulled.
    void Unplug();

    bool Plugged() const { return Master >= 0; }
    bool IsOpen() const { return Open; }
    const std::string& Device() const { return SlaveName; }
    // The bit rate that the other side has set; 0 when there is none or an unusual one.
    unsigned HostRate() const;
    // False when not all of it found room.
    bool Write(std::span<const std::uint8_t> bytes);

  private:
    bool MakeLink();
    bool HungUp() const;
    void WatchDevice();
    void ReadNotices();
    void ReadMaster();
    void BecomeOpen();
    void BecomeClosed();
    void ForgetUnread();
    void SettleOpenState();

    EventLoop& Loop;
    const std::filesystem::path Link;
    const Handlers On;
    int Master = -1;
    int Notices = -1;  // inotify: who opens and closes the device
    int DeviceWatch = -1;
    std::string SlaveName;
    int Openers = 0;
    bool Open = false;
    TimerId Settling = 0;
};

// Makes the folder and those above it, for their owner only. False with `problem` set when that fails.
bool MakeTerminalFolder(const std::filesystem::path& folder, std::string& problem);

}  // namespace readers
