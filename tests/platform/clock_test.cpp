#include <gtest/gtest.h>

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

}  // namespace
