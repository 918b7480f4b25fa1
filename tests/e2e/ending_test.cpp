// Every way to an end, from every state: it comes soon, with code 0, and leaves nothing behind that the next
// start would stumble over.
#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"
#include "tests/support/x_server.h"

namespace {

class Ending : public EndToEnd {
  public:
    // The next start finds everything free.
    void ExpectNextStart() {
        Running.reset();
        FitKnownReaders("laser");
        StartReady();
        Desktop.Typed(1, 0);  // what the ended one has still typed
        EXPECT_EQ(Scan("1 NEXT", 5), "NEXT\n");
        EXPECT_TRUE(Running->End());
        ExpectNothingLeft();
    }

    void Begin() {
        FitKnownReaders("laser");
        Start();
        ASSERT_TRUE(Running->IsThere());
    }
    void Detect() {
        FitReaders("imager");
        Start();
        ASSERT_TRUE(Wire->Saw("event opened com1"));
    }
    void Configure() {
        FitReaders("imager");
        Start();
        ASSERT_TRUE(Wire->Saw("event defaults com1", 30000));
    }
    void Download() {
        FitKnownReaders("laser");
        Wire->Command("fault no-ack always");
        Start();
        ASSERT_TRUE(Wire->Saw("event parameters com1", 10000));
    }
    void ShowBox() {
        Start();
        ASSERT_TRUE(Desktop.WaitForWindow(ErrorBoxTitle));
    }
    void Run() {
        FitKnownReaders("laser");
        StartReady();
    }
    void ReadBarcode() {
        Run();
        ASSERT_TRUE(PressTrigger());
    }
    void ReadTag() {
        FitKnownReaders("none", {}, "90");
        Start();
        ASSERT_TRUE(WaitUntilReady());
    }
    void ReceiveHalf() {
        Run();
        Wire->Command("fault continuation");
        Wire->Command("label 3 repeat:400:half");
        ASSERT_TRUE(PressTrigger());
        ASSERT_TRUE(Wire->Saw("event decode-acked"));
    }
    void Type() {
        Run();
        Wire->Command("label 3 repeat:4000:TypeMe");
        ASSERT_TRUE(PressTrigger());
        ASSERT_FALSE(Desktop.Typed(1, 10000).empty());
    }
    void Vibrate() {
        FitKnownReaders("laser", {{&general::EnableVibrator, '1'}, {&general::VibrateDuration, 30}});
        StartReady();
        EXPECT_EQ(Scan("1 AB", 3), "AB\n");
        EXPECT_TRUE(ReadWholeFile(Terminal.Path("VIBRATOR")).starts_with("1"));
    }
    void ShowSettings() {
        Run();
        StartAgain();
    }
};

struct State : Named {
    void (Ending::*Reach)();
};

class EndingIn : public Ending, public testing::WithParamInterface<State> {};

TEST_P(EndingIn, BySignal) {
    (this->*GetParam().Reach)();
    if (HasFatalFailure()) {
        return;
    }
    Running->Signal(SIGTERM);
    EXPECT_EQ(Running->Ended(), 0);
    ExpectNothingLeft();
    ExpectNextStart();
}

INSTANTIATE_TEST_SUITE_P(
    States, EndingIn,
    testing::Values(State{"Starting", &Ending::Begin}, State{"Detecting", &Ending::Detect},
                    State{"Configuring", &Ending::Configure}, State{"Downloading", &Ending::Download},
                    State{"ErrorBox", &Ending::ShowBox}, State{"ReadingABarcode", &Ending::ReadBarcode},
                    State{"ReadingATag", &Ending::ReadTag}, State{"HalfAMessage", &Ending::ReceiveHalf},
                    State{"Typing", &Ending::Type}, State{"Vibrating", &Ending::Vibrate},
                    State{"Settings", &Ending::ShowSettings}),
    NameOf);

// As a person restarts it: the one that is ending is not taken for a running one, and its ports are waited
// for.
TEST_F(Ending, AStartRightAfterAKillComesUp) {
    FitKnownReaders("laser");
    StartReady();
    for (int round = 0; round < 5; ++round) {
        Running->Signal(SIGTERM);
        auto next = std::make_unique<Vantrel>();
        EXPECT_EQ(Running->Ended(), 0) << "round " << round;
        Running = std::move(next);
        ASSERT_TRUE(WaitUntilReady()) << "round " << round;
    }
    EXPECT_EQ(Scan("1 NEXT", 5), "NEXT\n");
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

// The display goes while the program runs, and at every moment of its own end: never a crash, and always in
// order.
TEST_F(Ending, WithItsDisplayAtTheSameInstant) {
    FitKnownReaders("laser", {{&general::EnableVibrator, '1'}, {&general::VibrateDuration, 30}});
    const std::string usual = std::getenv("DISPLAY");
    for (int round = 0; round < 6; ++round) {
        auto display = std::make_unique<XServer>();
        Running = std::make_unique<Vantrel>();
        ASSERT_TRUE(WaitUntilReady()) << "round " << round;
        Wire->Forget();
        Wire->Command("label 1 AB");
        ASSERT_TRUE(PressTrigger());
        ASSERT_TRUE(Within(5000, [&] { return ReadWholeFile(Terminal.Path("VIBRATOR")).starts_with("1"); }));
        if (round > 0) {
            Running->Signal(SIGTERM);
            Pause(12 * (round - 1));
        }
        display.reset();
        const int code = Running->Ended();
        EXPECT_TRUE(code == 1 || (round > 0 && code == 0)) << code << " in round " << round;
        EXPECT_TRUE(ReadWholeFile(Terminal.Path("VIBRATOR")).starts_with("0")) << "round " << round;
        ExpectNothingShared();
        EXPECT_TRUE(Wire->Saw("event closed com1"));
    }
    setenv("DISPLAY", usual.c_str(), 1);
    ExpectNextStart();
}

TEST_F(Ending, OfStartsAtTheSameInstantOneStays) {
    FitKnownReaders("laser");
    std::vector<std::unique_ptr<Vantrel>> starts(5);
    for (auto& start : starts) {
        start = std::make_unique<Vantrel>();
    }
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_TRUE(Within(20000, [&] {
        std::erase_if(starts, [](auto& start) { return start->Ended(0) != -1; });
        return starts.size() <= 1;
    })) << "two of them run";
    ASSERT_FALSE(starts.empty());
    Running = std::move(starts.front());
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

TEST_F(Ending, TenTimesInARowWithTenKillsBetween) {
    FitKnownReaders("laser");
    for (int round = 0; round < 10; ++round) {
        Start();
        ASSERT_TRUE(Running->IsThere()) << "round " << round;
        if (round % 3 == 2) {
            ASSERT_TRUE(WaitUntilReady()) << "round " << round;
        }
        EXPECT_TRUE(Running->End()) << "round " << round;
        ExpectNothingLeft();
        Start();
        // Killed before and after there is a window, and while it runs.
        if (round % 3 != 0) {
            ASSERT_TRUE(Running->IsThere()) << "round " << round;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(30 * round));
        }
        // Wine hands the keys of one stroke on one by one: there a kill may come between them.
        if (round == 4 && !OnWine()) {
            ASSERT_TRUE(WaitUntilReady());
            Wire->Command("label 3 repeat:4000:TypeMe");
            EXPECT_TRUE(PressTrigger());
            EXPECT_FALSE(Desktop.Typed(1, 10000).empty());
        }
        Running->Signal(SIGKILL);
        EXPECT_EQ(Running->Ended(), 128 + SIGKILL);
        EXPECT_TRUE(Desktop.KeysAreUp());
    }
    ExpectNextStart();
}

}  // namespace
