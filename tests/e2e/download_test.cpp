// Settings on their way into the barcode reader: refusals, and what must not get in between.
#include <thread>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"

namespace {

struct Refusal {
    const char* Name;
    const char* Reader;
    WORD Device;
    const char* Fault;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.Name;
}

class Download : public EndToEnd {
  protected:
    void Prepare(const char* reader, WORD device) {
        FitReaders(reader);
        WriteSettings(device, {{&general::CheckReaderStatus, '0'}});
    }
};

class RefusedDownload : public Download, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusedDownload, EndsTheProgramWithAMessage) {
    Prepare(GetParam().Reader, GetParam().Device);
    Wire->Command(GetParam().Fault);
    Start();
    EXPECT_TRUE(ErrorBoxSays(Desktop, "Failed to initialize BC reader!!"));
    DismissErrorBox(Desktop);
    EXPECT_EQ(Running->Ended(), 0);
    ExpectNothingLeft();
    // What was not sent is sent by the next start.
    Wire->Command("fault off");
    Wire->Command("power on");
    StartReady();
    EXPECT_EQ(Scan(GetParam().Device == Device1D ? "A AB" : "1 AB", 3), "AB\n");
    EXPECT_TRUE(Running->End());
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedDownload,
    testing::Values(Refusal{"LaserRefuses", "laser", DeviceLaser, "fault nak-params 1 x2"},
                    Refusal{"LaserIsSilent", "laser", DeviceLaser, "fault no-ack always"},
                    Refusal{"ImagerRefusesTheSecondPacket", "imager", DeviceImager,
                            "fault nak-params 2 x2 after1"},
                    Refusal{"DecoderRefusesTwice", "1d", Device1D, "fault refuse-save x2"},
                    Refusal{"DecoderIsSilent", "1d", Device1D, "fault com1 no-reply always"}),
    [](const auto& refusal) { return std::string(refusal.param.Name); });

class SurvivedDownload : public Download, public testing::WithParamInterface<Refusal> {};

TEST_P(SurvivedDownload, LetsTheReaderRead) {
    Prepare(GetParam().Reader, GetParam().Device);
    Wire->Command(GetParam().Fault);
    StartReady();
    EXPECT_EQ(Scan(GetParam().Device == Device1D ? "A AB" : "1 AB", 3), "AB\n");
    EXPECT_TRUE(Running->End());
}

INSTANTIATE_TEST_SUITE_P(
    All, SurvivedDownload,
    testing::Values(Refusal{"DecoderRefusesOnce", "1d", Device1D, "fault refuse-save"},
                    Refusal{"DecoderTalksAtAnotherSpeed", "1d", Device1D, "rate com1 38400"},
                    Refusal{"LaserLosesAnAcknowledgement", "laser", DeviceLaser, "fault no-ack"},
                    Refusal{"ImagerAnswersInPieces", "imager", DeviceImager, "fault com1 split 3 20 x2"}),
    [](const auto& refusal) { return std::string(refusal.param.Name); });

// Trigger keys while replies are under way: nothing is read and nothing of the download is lost.
TEST_F(Download, ATriggerDoesNotDisturbIt) {
    Prepare("imager", DeviceImager);
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
    Prepare("laser", DeviceLaser);
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
