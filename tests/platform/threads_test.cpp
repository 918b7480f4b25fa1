#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/kernel.h"

namespace {

// CloseHandle while another thread waits, comes to wait or has just been refused: that call fails, always.
TEST(Handles, ClosingWakesTheWaiter) {
    for (const bool event : {true, false}) {
        for (int round = 0; round < 50; ++round) {
            const HANDLE object = event ? CreateEventW(nullptr, FALSE, FALSE, nullptr)
                                        : CreateSemaphoreW(nullptr, 0, 1, nullptr);
            std::atomic<bool> waiting{false};
            std::atomic<bool> failed{false};
            std::thread waiter([&] {
                waiting = true;
                waiting.notify_one();
                failed = WaitForSingleObject(object, INFINITE) == WAIT_FAILED;
            });
            waiting.wait(false);
            EXPECT_TRUE(CloseHandle(object));
            waiter.join();
            EXPECT_TRUE(failed) << event << " round " << round;
        }
    }
}

TEST(Handles, AStaleHandleNeverNamesALaterObject) {
    const HANDLE first = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    EXPECT_TRUE(CloseHandle(first));
    std::vector<HANDLE> later;
    for (int i = 0; i < 5000; ++i) {
        later.push_back(CreateEventW(nullptr, FALSE, TRUE, nullptr));
    }
    EXPECT_EQ(WaitForSingleObject(first, 0), WAIT_FAILED);
    EXPECT_FALSE(EventModify(first, EVENT_SET));
    EXPECT_FALSE(CloseHandle(first));
    for (const HANDLE handle : later) {
        EXPECT_TRUE(CloseHandle(handle));
    }
    for (const LONG_PTR value : {0L, -1L, 1L, 3L, 0x7FFFFFFFL}) {
        EXPECT_FALSE(CloseHandle(reinterpret_cast<HANDLE>(value))) << value;
    }
}

TEST(Events, AutomaticResetLetsOneWaiterThrough) {
    const HANDLE event = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EventModify(event, EVENT_SET);
    EventModify(event, EVENT_SET);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_FALSE(EventModify(event, 7));
    CloseHandle(event);
    EXPECT_EQ(CreateEventW(nullptr, TRUE, FALSE, nullptr), nullptr);

    const HANDLE semaphore = CreateSemaphoreW(nullptr, 2, 3, nullptr);
    EXPECT_FALSE(EventModify(semaphore, EVENT_SET));
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT);
    CloseHandle(semaphore);
}

}  // namespace
