#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>

#include "platform/kernel.h"

namespace {

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

TEST(RealTime, WhoOnlyLooksDoesNotSleep) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    rusage before{}, after{};
    getrusage(RUSAGE_THREAD, &before);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    }
    getrusage(RUSAGE_THREAD, &after);
    EXPECT_LT(after.ru_nvcsw - before.ru_nvcsw, 25);
    CloseHandle(event);
}

}  // namespace
