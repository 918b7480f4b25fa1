#include "scan/read_feedback.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/linux/kernel/sound_backend.h"
#include "settings/all_fields.h"
#include "shell/shell_state.h"
#include "tests/support/stage_clock.h"
#include "tests/support/temporary_terminal.h"

namespace {

class LoggedSound : public layer::SoundBackend {
  public:
    explicit LoggedSound(std::vector<std::string>& log) : log_(log) {}
    bool Play(const std::string& path) override {
        log_.push_back(path.substr(path.rfind("/Windows/") + 1));
        return true;
    }
    void Cancel() override { log_.push_back("cancel"); }

  private:
    std::vector<std::string>& log_;
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

    std::string Vibrator() const { return ReadWholeFile(terminal_.Path("VIBRATOR")); }

    TemporaryTerminal terminal_;
    std::vector<std::string> sounds_;
};

TEST_F(ReadFeedback, TheVibrationEndsAfterTheFirstOfOverlappingReads) {
    StageClock clock;
    layer::InstallClock(&clock);
    SetValue(general::VibrateDuration, 2);
    const std::uint64_t start = clock.Now();
    const auto at = [&](std::uint64_t time) {
        clock.AdvanceTo(start + time);
        StageClock::Rest();
        return Vibrator();
    };
    EXPECT_TRUE(GiveReadFeedback());
    EXPECT_EQ(at(300), "1");
    EXPECT_TRUE(GiveReadFeedback());
    EXPECT_EQ(at(999), "1");
    EXPECT_EQ(at(1000), "0");
    WriteWholeFile(terminal_.Path("VIBRATOR"), "1");
    EXPECT_EQ(at(1299), "1");
    EXPECT_EQ(at(1300), "0") << "the second read's thread has its own time";
    EXPECT_EQ(LastSound(), "");
    layer::InstallClock(nullptr);
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
        EXPECT_EQ(Vibrator(), "0");
        layer::InstallClock(nullptr);
    }
}

TEST_F(ReadFeedback, WhatIsSwitchedOffIsNotCalled) {
    SetValue(general::EnableVibrator, '0');
    EXPECT_TRUE(GiveReadFeedback());
    EXPECT_EQ(LastSound(), "");
    SetValue(general::GoodReadBeep, '5');
    EXPECT_TRUE(GiveReadFeedback());
    EXPECT_EQ(LastSound(), "Windows/Notify.wav");
    EXPECT_EQ(Vibrator(), "");
    for (const int noSound : {-1, 0, 10}) {
        PlayReadSound(noSound);
        EXPECT_EQ(LastSound(), noSound < 0 ? "cancel" : "") << noSound;  // nobody is woken to silence silence
    }
}

}  // namespace
