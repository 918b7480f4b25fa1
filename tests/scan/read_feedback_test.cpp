#include "scan/read_feedback.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>
#include <vector>

#include "platform/linux/kernel/sound_backend.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/scan/stepped_clock.h"
#include "tests/support/manual_clock.h"
#include "tests/support/temporary_terminal.h"

namespace {

class LoggedSound : public layer::SoundBackend {
  public:
    explicit LoggedSound(std::vector<std::string>& log) : log_(log) {}
    void Play(const std::string& path) override { log_.push_back(path.substr(path.rfind("/Windows/") + 1)); }
    void Cancel() override { log_.push_back("cancel"); }

  private:
    std::vector<std::string>& log_;
};

// The vibrator's file as a pipe: every switch can be read, in its order.
class VibratorPipe {
  public:
    explicit VibratorPipe(const std::string& path) {
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
    std::string LastSound() {
        layer::FinishSounds();
        return sounds_.empty() ? "" : std::exchange(sounds_, {}).back();
    }

    TemporaryTerminal terminal_;
    std::vector<std::string> sounds_;
};

TEST_F(ReadFeedback, TheVibrationEndsAfterTheFirstOfOverlappingReads) {
    SteppedClock clock;
    layer::InstallClock(&clock);
    VibratorPipe vibrator(terminal_.Path("VIBRATOR"));
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
    EXPECT_EQ(LastSound(), "");
}

TEST_F(ReadFeedback, EveryDurationIsBounded) {
    const std::pair<WORD, DWORD> cases[] = {{0, 500}, {2, 1000}, {30, 15000}, {31, 15000}, {0xFFFF, 15000}};
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

TEST_F(ReadFeedback, WhatIsSwitchedOffIsNotCalled) {
    VibratorPipe vibrator(terminal_.Path("VIBRATOR"));
    SetValue(general::EnableVibrator, '0');
    GiveReadFeedback();
    EXPECT_EQ(LastSound(), "");
    SetValue(general::GoodReadBeep, '5');
    GiveReadFeedback();
    EXPECT_EQ(LastSound(), "Windows/Notify.wav");
    EXPECT_EQ(vibrator.Next(5), ' ');
    for (const int noSound : {-1, 0, 10}) {
        PlayReadSound(noSound);
        EXPECT_EQ(LastSound(), "cancel") << noSound;
    }
}

}  // namespace
