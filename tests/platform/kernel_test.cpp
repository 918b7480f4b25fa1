// Handles, events, pauses and texts.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/kernel.h"
#include "platform/linux/kernel/clock.h"
#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/terminal.h"

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

// Until the stack is full.
DWORD WINAPI Deeper(LPVOID enough) {
    volatile BYTE room[4096];
    room[0] = 1;
    return enough ? 0 : Deeper(enough) + room[0];
}

TEST(Threads, OneWhoseStackIsFullStillSaysWhatEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // The sanitizers leave it to the program.
    for (const char* options : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
        setenv(options, "handle_segv=0:use_sigaltstack=0", 1);
    }
    for (const bool main : {true, false}) {
        EXPECT_DEATH(
            {
                layer::SpeakOnCrash();
                main ? Deeper(nullptr)
                     : WaitForSingleObject(CreateThread(nullptr, 0, Deeper, nullptr, 0, nullptr), INFINITE);
            },
            "ended by signal 11")
            << main;
    }
}

// None ends early, in a thread that has its alarms set early. The best of many, since the machine may be
// busy: a pause that was rounded to the clock's ticks would be a whole one longer when it begins right behind
// one.
TEST(RealTime, APauseIsNoShorterAndNoLongerThanAsked) {
    using Time = std::chrono::steady_clock;
    using std::chrono::microseconds, std::chrono::milliseconds;
    auto shortest = Time::duration::max(), best = shortest;
    std::thread([&] {
        for (int i = 0; i < 100; ++i) {
            for (const DWORD tick = GetTickCount(); GetTickCount() == tick;) {
            }
            const auto start = Time::now();
            Sleep(3);
            shortest = std::min(shortest, Time::now() - start);
            if (start.time_since_epoch() % milliseconds(1) < microseconds(100)) {
                best = std::min(best, Time::now() - start);
            }
        }
        // What comes late is set earlier from then on, but not without end.
        Time::duration lead{};
        for (int i = 0; i < 100; ++i) {
            layer::ExactWait(Time::now() - milliseconds(2)).Finish();
            const auto end = Time::now();
            EXPECT_GE(end - layer::ExactWait(end).Alarm(), lead);
            lead = end - layer::ExactWait(end).Alarm();
        }
        EXPECT_EQ(lead, microseconds(250));
        // And later again when it comes early.
        layer::ExactWait(Time::now() + milliseconds(1)).Finish();
        EXPECT_LT(Time::time_point{} - layer::ExactWait(Time::time_point{}).Alarm(), lead);
    }).join();
    EXPECT_GE(shortest, milliseconds(3));
    EXPECT_LT(best, microseconds(3600));
}

template <class... Arguments>
std::string Format(const char16_t* format, Arguments... arguments) {
    std::array<WCHAR, 1024> text;
    text.fill(u'#');
    const int length = wsprintfW(text.data(), format, arguments...);
    EXPECT_EQ(text[static_cast<std::size_t>(length)], 0);
    return layer::ToUtf8({text.data(), static_cast<std::size_t>(length)});
}

TEST(Text, FormatsAsThePlatformDoes) {
    EXPECT_EQ(Format(u"%d|%u|%s|100%% %", INT32_MIN, 0xFFFFFFFFu, u"\u20AC"),
              "-2147483648|4294967295|\xE2\x82\xAC|100% ");
    const std::u16string longText(2000, u'x');
    EXPECT_EQ(Format(u"ab%s%d", longText.c_str(), 5), "ab" + std::string(1021, 'x'));
    std::array<WCHAR, 4> cut{u'#', u'#', u'#', u'#'};
    EXPECT_EQ(lstrcpynW(cut.data(), u"abcdef", 3), cut.data());
    EXPECT_EQ(std::u16string_view(cut.data(), 4), std::u16string_view(u"ab\0#", 4));
}

// A pipe that nobody reads, a terminal that was stopped: the lines are left out until somebody does.
TEST(Log, NobodyWaitsForTheReaderOfStandardError) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    fcntl(ends[1], F_SETPIPE_SZ, 4096);
    const int standard = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int line = 0; line < 100; ++line) {
            WriteLogLine(LogPriority::Info, std::u16string(1000, u'x').c_str());
        }
        done = true;
    });
    for (int tries = 0; tries < 1000 && !done; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_TRUE(done);
    std::array<char, 4096> bytes;
    do {
        while (read(ends[0], bytes.data(), bytes.size()) > 0) {
        }
    } while (!done);
    writer.join();
    while (read(ends[0], bytes.data(), bytes.size()) > 0) {
    }
    WriteLogLine(LogPriority::Info, TEXT("again"));
    dup2(standard, STDERR_FILENO);
    close(ends[1]);
    const ssize_t size = read(ends[0], bytes.data(), bytes.size());
    EXPECT_EQ(std::string(bytes.data(), size > 0 ? static_cast<std::size_t>(size) : 0), "vantrel: again\n");
    close(standard), close(ends[0]);
}

}  // namespace
