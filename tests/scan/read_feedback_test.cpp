#include "scan/read_feedback.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>
#include <utility>
#include <vector>

#include "app/shell_state.h"
#include "platform/linux/clock.h"
#include "platform/linux/sound_backend.h"
#include "settings/all_fields.h"
#include "tests/scan/stepped_clock.h"
#include "tests/support/temporary_terminal.h"

namespace {

struct SoundLog {
    std::mutex Mutex;
    std::vector<std::string> Entries;
};

class LoggedSound : public layer::SoundBackend {
  public:
    explicit LoggedSound(SoundLog& log) : log_(log) {}
    void Play(const std::string& path) override { Add(path.substr(path.rfind("/Windows/") + 1)); }
    void Cancel() override { Add("cancel"); }

  private:
    void Add(std::string entry) {
        const std::scoped_lock lock(log_.Mutex);
        log_.Entries.push_back(std::move(entry));
    }
    SoundLog& log_;
};

// The vibrator's file as a pipe: every switch can be read, in its order.
class VibratorPipe {
  public:
    explicit VibratorPipe(const TemporaryTerminal& terminal) {
        const std::string path = terminal.Path("VIBRATOR");
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        file_ = open(path.c_str(), O_RDONLY | O_NONBLOCK);
        EXPECT_GE(file_, 0);
    }
    ~VibratorPipe() { close(file_); }
    VibratorPipe(const VibratorPipe&) = delete;
    VibratorPipe& operator=(const VibratorPipe&) = delete;

    // The next switch, '1' or '0'; ' ' when none comes within the time (real milliseconds).
    char Next(int milliseconds) {
        // Between two writers the pipe has no writer at all; that is no switch.
        for (int waited = 0; waited <= milliseconds; ++waited) {
            char state = 0;
            if (read(file_, &state, 1) == 1) {
                return state;
            }
            usleep(1000);
        }
        return ' ';
    }

  private:
    int file_;
};

class ReadFeedback : public testing::Test {
  protected:
    void SetUp() override {
        layer::InstallSound(std::make_unique<LoggedSound>(sounds_));
        ShellState.VibratorSemaphore = CreateSemaphoreW(nullptr, 0, 1, nullptr);
        SetValue(general::EnableVibrator, '1');
        SetValue(general::GoodReadBeep, '0');
    }
    void TearDown() override {
        CloseHandle(ShellState.VibratorSemaphore.Exchange(nullptr));
        layer::FinishSounds();
        layer::InstallSound(nullptr);
        layer::InstallClock(nullptr);
    }
    std::vector<std::string> Sounds() {
        layer::FinishSounds();
        const std::scoped_lock lock(sounds_.Mutex);
        return std::exchange(sounds_.Entries, {});
    }

    TemporaryTerminal terminal_;
    SoundLog sounds_;
};

TEST_F(ReadFeedback, TheVibrationEndsAfterTheFirstOfOverlappingReads) {
    SteppedClock clock;
    layer::InstallClock(&clock);
    VibratorPipe vibrator(terminal_);
    SetValue(general::VibrateDuration, 2);
    GiveReadFeedback();
    EXPECT_EQ(vibrator.Next(1000), '1');
    clock.AwaitWaits(1);
    clock.AdvanceTo(300);
    GiveReadFeedback();
    EXPECT_EQ(vibrator.Next(1000), '1');
    clock.AwaitWaits(2);
    clock.AdvanceTo(999);
    EXPECT_EQ(vibrator.Next(20), ' ');
    clock.AdvanceTo(1000);
    EXPECT_EQ(vibrator.Next(1000), '0');
    clock.AdvanceTo(1299);
    EXPECT_EQ(vibrator.Next(20), ' ');
    clock.AdvanceTo(1300);
    EXPECT_EQ(vibrator.Next(1000), '0');
    EXPECT_TRUE(Sounds().empty());
}

TEST_F(ReadFeedback, EveryDurationIsBounded) {
    const struct {
        WORD Duration;
        DWORD Milliseconds;
    } cases[] = {{0, 500}, {1, 500}, {2, 1000}, {30, 15000}, {31, 15000}, {0xFFFF, 15000}};
    for (const auto& [duration, milliseconds] : cases) {
        layer::ManualClock clock;
        layer::InstallClock(&clock);
        WriteWholeFile(terminal_.Path("VIBRATOR"), "1");
        SetValue(general::VibrateDuration, duration);
        const std::uint64_t start = clock.Now();
        EXPECT_EQ(VibratorStopThread(nullptr), DWORD{TRUE});
        EXPECT_EQ(clock.Now() - start, milliseconds) << duration;
        EXPECT_EQ(ReadWholeFile(terminal_.Path("VIBRATOR")), "0");
        layer::InstallClock(nullptr);
    }
}

TEST_F(ReadFeedback, SoundsByNumber) {
    const struct {
        int Number;
        std::string File;
    } cases[] = {{1, "Default"}, {2, "Hwandsw"}, {7, "Alarm2"}, {9, "LowBatt"}, {0, ""}, {10, ""}, {-1, ""}};
    for (const auto& [number, file] : cases) {
        PlayReadSound(number);
        std::vector<std::string> log = Sounds();
        ASSERT_FALSE(log.empty()) << number;
        EXPECT_EQ(log.front(), "cancel");
        EXPECT_EQ(log.back(), file.empty() ? "cancel" : "Windows/" + file + ".wav") << number;
    }
}

TEST_F(ReadFeedback, WhatIsSwitchedOffIsNotCalled) {
    VibratorPipe vibrator(terminal_);
    SetValue(general::EnableVibrator, '0');
    GiveReadFeedback();
    EXPECT_TRUE(Sounds().empty());
    SetValue(general::GoodReadBeep, '5');
    GiveReadFeedback();
    EXPECT_EQ(Sounds().back(), "Windows/Notify.wav");
    EXPECT_EQ(vibrator.Next(5), ' ');
}

}  // namespace
