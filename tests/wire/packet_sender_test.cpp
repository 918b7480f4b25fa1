// Two threads that send packets on one port.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

#include "link/command_exchange.h"
#include "link/framing.h"
#include "link/serial_ports.h"
#include "platform/linux/serial/serial_port.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/support/manual_clock.h"

namespace {

struct LineEvent {
    std::uint64_t Time;
    bool Rts, Written;
};

// Notes when RTS changes and when bytes leave.
class LineLog : public layer::SerialPort {
  public:
    std::vector<LineEvent> Events;

    BOOL Read(void*, DWORD, DWORD& read) override { return read = 0, TRUE; }
    BOOL Write(const void*, DWORD size, DWORD& written) override {
        written = size;
        const std::lock_guard lock(mutex_);
        Note(true);
        return TRUE;
    }
    BOOL GetState(DCB& state) override {
        const std::lock_guard lock(mutex_);
        return state = state_, TRUE;
    }
    BOOL SetState(const DCB& state) override {
        const std::lock_guard lock(mutex_);
        if (state.fRtsControl != state_.fRtsControl) {
            state_ = state;
            Note(false);
        }
        return TRUE;
    }
    BOOL GetTimeouts(COMMTIMEOUTS&) override { return TRUE; }
    BOOL SetTimeouts(const COMMTIMEOUTS&) override { return TRUE; }
    BOOL Purge(DWORD) override { return TRUE; }
    BOOL SetMask(DWORD) override { return TRUE; }
    BOOL WaitEvent(DWORD&) override { return FALSE; }
    BOOL ClearError(DWORD&, COMSTAT&) override { return FALSE; }
    BOOL SetBreak(bool) override { return TRUE; }
    bool Close() override { return true; }

  private:
    void Note(bool written) {
        Events.push_back({layer::CurrentClock().Now(), state_.fRtsControl != RTS_CONTROL_DISABLE, written});
    }
    std::mutex mutex_;
    DCB state_{};
};

// Gives the other thread a moment in which to come in between.
class SharedClock : public layer::ManualClock {
    bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                   std::uint64_t deadline, const std::function<bool()>& done) override {
        std::this_thread::sleep_for(std::chrono::microseconds(20));
        return ManualClock::WaitUntil(lock, condition, deadline, done);
    }
};

TEST(PacketSender, EveryPacketHasItsTimeAroundItWhoeverElseSends) {
    SharedClock clock;
    layer::InstallClock(&clock);
    const auto log = std::make_shared<LineLog>();
    layer::InstallSerialOpener([&](const std::string&) { return log; });
    DeviceFlags = DeviceImager;
    ShellState.BarcodePort = OpenReaderPort(BarcodePortSelector);
    constexpr int Count = 200;
    std::atomic<int> sent = 0;
    std::latch both(2);
    const auto send = [&](DWORD pause) {
        both.arrive_and_wait();
        for (int i = 0; i < Count; ++i) {
            sent += SendReaderCommand(ShellState.BarcodePort, SsiHostAck);
            Sleep(i % pause);
        }
    };
    std::thread receiver(send, 170);
    send(7);
    receiver.join();
    EXPECT_EQ(2 * Count, sent);
    std::uint64_t raised = 0, written = 0;
    bool up = false;
    for (const LineEvent& event : log->Events) {
        if (event.Written) {
            ASSERT_TRUE(up) << event.Time;
            ASSERT_GE(event.Time, raised + 100);
            written = event.Time;
        } else {
            up = event.Rts;
            if (up)
                raised = event.Time;
            else
                ASSERT_GE(event.Time, written + 50);
        }
    }
    EXPECT_FALSE(up);
    CloseReaderPort(ShellState.BarcodePort);
    layer::InstallSerialOpener(nullptr);
    layer::InstallClock(nullptr);
}

}  // namespace
