// Settings on their way into the barcode reader: refusals, and what must not get in between.
#include <thread>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"

namespace {

struct Fault : Named {
    const char* Reader;
    const char* Command;
    bool Survived;
};

class Download : public EndToEnd {};
class DisturbedDownload : public Download, public testing::WithParamInterface<Fault> {};

TEST_P(DisturbedDownload, LetsTheReaderReadOrEndsWithAMessage) {
    FitKnownReaders(GetParam().Reader);
    Wire->Command(GetParam().Command);
    if (!GetParam().Survived) {
        Start();
        EXPECT_TRUE(ErrorBoxSays(Desktop, "Failed to initialize BC reader!!"));
        DismissErrorBox(Desktop);
        EXPECT_EQ(Running->Ended(), 0);
        ExpectNothingLeft();
        // What was not sent is sent by the next start.
        Wire->Command("fault off");
        Wire->Command("power on");
    }
    StartReady();
    EXPECT_EQ(Scan(GetParam().Reader == std::string("1d") ? "A AB" : "1 AB", 3), "AB\n");
    EXPECT_TRUE(Running->End());
}

INSTANTIATE_TEST_SUITE_P(
    By, DisturbedDownload,
    testing::Values(Fault{"LaserThatRefuses", "laser", "fault nak-params 1 x2", false},
                    Fault{"SilentLaser", "laser", "fault no-ack always", false},
                    Fault{"ImagerThatRefusesTheSecondPacket", "imager", "fault nak-params 2 x2 after1",
                          false},
                    Fault{"DecoderThatRefusesTwice", "1d", "fault refuse-save x2", false},
                    Fault{"SilentDecoder", "1d", "fault com1 no-reply always", false},
                    Fault{"DecoderThatRefusesOnce", "1d", "fault refuse-save", true},
                    Fault{"DecoderAtAnotherSpeed", "1d", "rate com1 38400", true},
                    Fault{"LaserThatLosesAnAcknowledgement", "laser", "fault no-ack", true},
                    Fault{"ImagerThatAnswersInPieces", "imager", "fault com1 split 3 20 x2", true}),
    NameOf);

// Trigger keys while replies are under way: nothing is read and nothing of the download is lost.
TEST_F(Download, ATriggerDoesNotDisturbIt) {
    FitKnownReaders("imager");
    Wire->Command("fault com1 late 1500 x2");
    Wire->Command("label 3 Waiting");
    Start();
    ASSERT_TRUE(Wire->Saw("event parameters com1", 15000));
    for (int presses = 0; presses < 5; ++presses) {
        Trigger({"press", "50"});
    }
    EXPECT_EQ(Wire->Count("rx com1 04 E4"), 0);
    ASSERT_TRUE(WaitUntilReady());
    // Both packets have come whole.
    const std::string log = Wire->Log();
    const std::size_t first = log.find("event parameters com1");
    EXPECT_NE(log.find("event parameters com1", first + 1), std::string::npos);
    ASSERT_TRUE(PressTrigger());
    EXPECT_EQ(Desktop.Typed(8), "Waiting\n");
    EXPECT_TRUE(Running->End());
}

// A second start asks for the settings; they open when the download is through.
TEST_F(Download, TheSettingsWaitForItsEnd) {
    FitKnownReaders("laser");
    Wire->Command("fault com1 late 1800");
    Start();
    ASSERT_TRUE(Wire->Saw("event parameters com1", 15000));
    Vantrel second;
    EXPECT_EQ(second.Ended(), 0);
    EXPECT_FALSE(SettingsOpen(true, 0));
    EXPECT_EQ(Wire->Count("rx com1 04 E5"), 0) << "a read was stopped in the middle of the download";
    ASSERT_TRUE(Wire->Saw("tx com1 04 D0", 5000));
    EXPECT_TRUE(SettingsOpen());
    EXPECT_FALSE(Desktop.WaitForWindow(ErrorBoxTitle, 0));
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

}  // namespace
