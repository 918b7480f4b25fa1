#include "tests/support/manual_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "platform/linux/kernel/thread.h"
#include "platform/message_queue.h"
#include "tests/support/temporary_terminal.h"

namespace {

class ManualTime : public testing::Test {
  protected:
    ManualTime() { layer::InstallClock(&Clock); }
    ~ManualTime() override { layer::InstallClock(nullptr); }
    layer::ManualClock Clock;
};

// Notes its name at its time, and can do something then.
class Alarm : public layer::TimedSource {
  public:
    Alarm(layer::ManualClock& clock, std::uint64_t due, std::function<void()> work)
        : clock_(clock), due_(due), work_(std::move(work)) {
        clock_.AddSource(*this);
    }
    ~Alarm() override { clock_.RemoveSource(*this); }
    std::uint64_t NextDue() override { return due_; }
    void RunDue(std::uint64_t now) override {
        EXPECT_EQ(now, due_);
        due_ = layer::Forever;
        work_();
    }

  private:
    layer::ManualClock& clock_;
    std::uint64_t due_;
    std::function<void()> work_;
};

// The best of many, since the machine may be busy: a pause that was rounded to the clock's ticks would be a
// whole one longer when it begins right behind one.
TEST(RealTime, APauseIsNoLongerThanAsked) {
    using Time = std::chrono::steady_clock;
    auto best = Time::duration::max();
    for (int i = 0; i < 100; ++i) {
        for (const DWORD tick = GetTickCount(); GetTickCount() == tick;) {
        }
        const auto start = Time::now();
        Sleep(3);
        if (start.time_since_epoch() % std::chrono::milliseconds(1) < std::chrono::microseconds(100)) {
            best = std::min(best, Time::now() - start);
        }
    }
    EXPECT_GE(best, std::chrono::milliseconds(3));
    EXPECT_LT(best, std::chrono::microseconds(3600));
}

TEST_F(ManualTime, EveryWaitEndsAtItsDeadlineAndCostsNothing) {
    const TemporaryTerminal terminal;
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE named = CreateEventW(nullptr, FALSE, FALSE, TEXT("Clocked"));
    MSGQUEUEOPTIONS options{sizeof options, 0, 1, 8, TRUE};
    const HANDLE queue = CreateMsgQueue(TEXT("Clocked"), &options);
    char message[8];
    DWORD size = 0;
    DWORD flags = 0;
    const std::function<bool()> waits[] = {
        [&] { return WaitForSingleObject(event, 15000) == WAIT_TIMEOUT; },
        [&] { return WaitForSingleObject(named, 15000) == WAIT_TIMEOUT; },
        [&] { return !ReadMsgQueue(queue, message, sizeof message, &size, 15000, &flags); },
        [] { return Sleep(15000), true; },
    };
    for (const auto& wait : waits) {
        const DWORD start = GetTickCount();
        EXPECT_TRUE(wait());
        EXPECT_EQ(GetTickCount() - start, 15000u);
    }
    for (const HANDLE handle : {event, named, queue}) {
        CloseHandle(handle);
    }
}

TEST_F(ManualTime, SourcesRunInOrderAndEndWaitsEarly) {
    std::string order;
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const std::uint64_t start = Clock.Now();
    const Alarm late(Clock, start + 300, [&] { order += 'c'; });
    const Alarm early(Clock, start + 100, [&] { order += 'a'; });
    const Alarm middle(Clock, start + 200, [&] {
        order += 'b';
        EventModify(event, EVENT_SET);
    });
    EXPECT_EQ(WaitForSingleObject(event, 1000), WAIT_OBJECT_0);
    EXPECT_EQ(order, "ab");
    EXPECT_EQ(Clock.Now(), start + 200);
    Clock.Advance(1000);
    EXPECT_EQ(order, "abc");
    EXPECT_EQ(Clock.Now(), start + 1200);
    CloseHandle(event);
}

}  // namespace
