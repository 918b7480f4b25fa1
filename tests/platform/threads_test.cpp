#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <numeric>
#include <thread>
#include <vector>

#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/thread.h"
#include "platform/message_queue.h"
#include "tests/support/temporary_terminal.h"

namespace {

bool Eventually(const std::function<bool()>& holds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

void LetOthersRun(int turns) {
    for (int turn = 0; turn < turns; ++turn) {
        std::this_thread::yield();
    }
}

// A thread that repeats one call until it is told to stop, and says how often the call succeeded.
struct Repeater {
    std::function<bool()> Call;
    std::atomic<bool> Stop{false};
    std::atomic<int> Calls{0};
    std::atomic<int> Successes{0};
    HANDLE Thread = nullptr;

    explicit Repeater(std::function<bool()> call, DWORD flags = 0) : Call(std::move(call)) {
        Thread = CreateThread(
            nullptr, 0,
            [](LPVOID self) -> DWORD {
                auto& repeater = *static_cast<Repeater*>(self);
                while (!repeater.Stop) {
                    repeater.Successes += repeater.Call() ? 1 : 0;
                    ++repeater.Calls;
                }
                return 0;
            },
            this, flags, nullptr);
    }
    ~Repeater() {
        Stop = true;
        EXPECT_EQ(WaitForSingleObject(Thread, 10000), WAIT_OBJECT_0);
        CloseHandle(Thread);
    }
};

TEST(Threads, CreatedSuspendedRunsOnlyWhenResumedAsOftenAsSuspended) {
    Repeater repeater([] { return true; }, CREATE_SUSPENDED);
    EXPECT_EQ(SuspendThread(repeater.Thread), 1u);
    EXPECT_EQ(ResumeThread(repeater.Thread), 2u);
    EXPECT_EQ(WaitForSingleObject(repeater.Thread, 20), WAIT_TIMEOUT);
    EXPECT_EQ(repeater.Calls, 0);
    EXPECT_EQ(ResumeThread(repeater.Thread), 1u);
    EXPECT_EQ(ResumeThread(repeater.Thread), 0u);
    EXPECT_TRUE(Eventually([&] { return repeater.Calls > 0; }));
}

TEST(Threads, SuspensionHasABoundAndEndsWithTheThread) {
    HANDLE thread = nullptr;
    {
        Repeater repeater([] {
            Sleep(0);
            return true;
        });
        thread = repeater.Thread;
        for (DWORD count = 0; count < 127; ++count) {
            ASSERT_EQ(SuspendThread(thread), count);
        }
        EXPECT_EQ(SuspendThread(thread), 0xFFFFFFFFu);
        for (DWORD count = 127; count > 0; --count) {
            ASSERT_EQ(ResumeThread(thread), count);
        }
        repeater.Stop = true;
        EXPECT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
        EXPECT_EQ(SuspendThread(thread), 0xFFFFFFFFu);
        EXPECT_EQ(ResumeThread(thread), 0u);
    }
    EXPECT_EQ(SuspendThread(thread), 0xFFFFFFFFu);
    EXPECT_EQ(ResumeThread(thread), 0xFFFFFFFFu);
}

// Whether the thread is in the wait, before it or on its way out, nothing is taken once SuspendThread is
// back.
TEST(Threads, ASuspendedThreadTakesNoEvent) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    Repeater repeater([event] { return WaitForSingleObject(event, 1) == WAIT_OBJECT_0; });
    for (int round = 0; round < 2000; ++round) {
        LetOthersRun(round % 8);
        ASSERT_NE(SuspendThread(repeater.Thread), 0xFFFFFFFFu);
        EventModify(event, EVENT_SET);
        ASSERT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0) << round;
        ResumeThread(repeater.Thread);
    }
    EventModify(event, EVENT_SET);
    EXPECT_TRUE(Eventually([&] { return repeater.Successes == 1; }));
    EXPECT_TRUE(CloseHandle(event));
}

// Every message arrives once and in order, however often the reader is suspended in the middle.
TEST(Threads, SuspensionLosesNoMessage) {
    const TemporaryTerminal terminal;
    MSGQUEUEOPTIONS options{sizeof options, 0, 1, sizeof(int), TRUE};
    const HANDLE reads = CreateMsgQueue(TEXT("Numbers"), &options);
    options.bReadAccess = FALSE;
    const HANDLE writes = CreateMsgQueue(TEXT("Numbers"), &options);
    ASSERT_TRUE(reads != nullptr && writes != nullptr);
    std::vector<int> arrived;
    constexpr int Count = 1000;
    {
        Repeater repeater([&] {
            int number = -1;
            DWORD size = 0;
            DWORD flags = 0;
            if (!ReadMsgQueue(reads, &number, sizeof number, &size, 50, &flags)) {
                return false;
            }
            arrived.push_back(number);
            return true;
        });
        for (int number = 0; number < Count; ++number) {
            LetOthersRun(number % 16);
            SuspendThread(repeater.Thread);
            ASSERT_TRUE(WriteMsgQueue(writes, &number, sizeof number, 0, 0)) << number;
            LetOthersRun(16);
            ASSERT_FALSE(WriteMsgQueue(writes, &number, sizeof number, 0, 0)) << number << " was taken";
            ResumeThread(repeater.Thread);
            ASSERT_TRUE(Eventually([&] { return repeater.Successes == number + 1; }));
        }
    }
    std::vector<int> expected(Count);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(arrived, expected);
    CloseMsgQueue(reads);
    CloseMsgQueue(writes);
}

TEST(Threads, ParkingIsPutOffWhileAKeyIsDown) {
    static std::atomic<int> step{0};
    static std::atomic<bool> go{false};
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID) -> DWORD {
            layer::DeferParking();
            step = 1;
            while (!go) {
                std::this_thread::yield();
            }
            Sleep(1);
            step = 2;
            layer::AllowParking();
            Sleep(0);
            step = 3;
            return 0;
        },
        nullptr, 0, nullptr);
    ASSERT_TRUE(Eventually([&] { return step == 1; }));
    SuspendThread(thread);
    go = true;
    EXPECT_TRUE(Eventually([&] { return step == 2; }));
    EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
    EXPECT_EQ(step, 2);
    ResumeThread(thread);
    EXPECT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
    CloseHandle(thread);
}

// A wait of somebody's own making is woken by the request, also when that came before the wait.
TEST(Threads, WakeOnParkReachesEveryWait) {
    struct OwnWait {
        std::mutex Mutex;
        std::condition_variable Condition;
        bool Woken = false;
        std::atomic<bool> Inside{false};
        void Wait() {
            Inside = true;
            const layer::WakeOnPark wake([this] {
                std::scoped_lock lock(Mutex);
                Woken = true;
                Condition.notify_all();
            });
            {
                std::unique_lock lock(Mutex);
                Condition.wait(lock, [this] { return Woken; });
                Woken = false;
            }
            Inside = false;
        }
    } own;
    Repeater repeater([&own] {
        own.Wait();
        layer::SuspendPoint();
        return true;
    });
    for (int round = 0; round < 500; ++round) {
        SuspendThread(repeater.Thread);
        // It may be on its way into the next wait the first time one looks.
        for (int look = 0; look < 3; ++look) {
            ASSERT_TRUE(Eventually([&] { return !own.Inside; })) << round;
            std::this_thread::yield();
        }
        ResumeThread(repeater.Thread);
    }
    repeater.Stop = true;
    EXPECT_TRUE(Eventually([&] {
        SuspendThread(repeater.Thread);
        ResumeThread(repeater.Thread);
        return WaitForSingleObject(repeater.Thread, 0) == WAIT_OBJECT_0;
    }));
}

// CloseHandle while another thread waits, comes to wait or has just been refused: that call fails, always.
TEST(Handles, ClosingWakesTheWaiter) {
    const TemporaryTerminal terminal;
    MSGQUEUEOPTIONS options{sizeof options, 0, 1, 8, TRUE};
    const HANDLE queueKept = CreateMsgQueue(TEXT("Closing"), &options);
    const struct {
        const char* Name;
        std::function<HANDLE()> Make;
    } cases[] = {
        {"event", [] { return CreateEventW(nullptr, FALSE, FALSE, nullptr); }},
        {"named event", [] { return CreateEventW(nullptr, FALSE, FALSE, TEXT("Closing")); }},
        {"semaphore", [] { return CreateSemaphoreW(nullptr, 0, 1, nullptr); }},
        {"queue", [&options] { return CreateMsgQueue(TEXT("Closing"), &options); }},
    };
    for (const auto& each : cases) {
        const bool isQueue = std::string_view(each.Name) == "queue";
        for (int round = 0; round < 50; ++round) {
            const HANDLE object = each.Make();
            ASSERT_NE(object, nullptr) << each.Name;
            std::atomic<bool> waiting{false};
            std::atomic<bool> failed{false};
            std::thread waiter([&] {
                waiting = true;
                if (isQueue) {
                    char message[8];
                    DWORD size = 0;
                    DWORD flags = 0;
                    failed = !ReadMsgQueue(object, message, sizeof message, &size, INFINITE, &flags);
                } else {
                    failed = WaitForSingleObject(object, INFINITE) == WAIT_FAILED;
                }
            });
            ASSERT_TRUE(Eventually([&] { return waiting.load(); }));
            EXPECT_TRUE(CloseHandle(object));
            waiter.join();
            EXPECT_TRUE(failed) << each.Name << " round " << round;
        }
    }
    CloseHandle(queueKept);
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
    EventModify(event, EVENT_SET);
    EXPECT_TRUE(EventModify(event, EVENT_RESET));
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
    EXPECT_EQ(CreateSemaphoreW(nullptr, 2, 1, nullptr), nullptr);
    EXPECT_EQ(CreateSemaphoreW(nullptr, -1, 1, nullptr), nullptr);
    EXPECT_EQ(CreateSemaphoreW(nullptr, 0, 0, nullptr), nullptr);
}

}  // namespace
