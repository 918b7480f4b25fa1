// Every way a start can go.
#include <fcntl.h>
#include <semaphore.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>

#include "platform/linux/kernel/terminal.h"
#include "settings/record.h"
#include "tests/e2e/end_to_end.h"

namespace {

constexpr std::size_t MajorAt = 0, MinorAt = 2, FlagsAt = 40, ActiveDeviceAt = 760, DataOutputAt = 770;
constexpr std::size_t FileSize = 1100;

class Startup : public EndToEnd {
  protected:
    // The file that a start leaves: current version, these readers.
    void ExpectFile(WORD devices) {
        EXPECT_EQ(ReadWholeFile(SettingsPath()).size(), FileSize);
        EXPECT_EQ(SettingsWord(MajorAt), 1);
        EXPECT_EQ(SettingsWord(MinorAt), 1);
        EXPECT_EQ(SettingsWord(FlagsAt), devices);
    }
    void ExpectScan(const std::string& label, const std::string& typed) {
        EXPECT_EQ(Scan(label, typed.size()), typed);
    }
    // The program says this, and ends with code 0 when the box is dismissed; nothing is left.
    void ExpectFailure(const std::string& text) {
        Start();
        EXPECT_TRUE(ErrorBoxSays(Desktop, text));
        EXPECT_EQ(Running->Ended(0), -1) << "it ended before the box was dismissed";
        DismissErrorBox(Desktop);
        EXPECT_EQ(Running->Ended(), 0);
        ExpectNothingLeft();
    }
};

TEST_F(Startup, WithoutAFileReadersAreFoundConfiguredAndGetDefaults) {
    FitReaders("imager");
    StartReady();
    EXPECT_NE(Wire->Log().find("event defaults com1"), std::string::npos);
    ExpectFile(DeviceImager);
    EXPECT_EQ(SettingsWord(DataOutputAt), '1');
    ExpectScan("3 Fresh", "Fresh\n");
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

TEST_F(Startup, AFileThatStillFitsIsKeptAndTheReaderNotSetUpAnew) {
    FitReaders("imager");
    WriteSettings(DeviceImager, {{&general::AutoEnter, '0'}, {&general::IncludeCodeLength, '1'}});
    StartReady();
    EXPECT_NE(Wire->Log().find("rx com1 04 A3"), std::string::npos) << "the reader was not looked for";
    EXPECT_EQ(Wire->Log().find("event defaults com1"), std::string::npos) << "the reader was set up anew";
    ExpectFile(DeviceImager);
    ExpectScan("3 Kept", "004Kept");
    EXPECT_TRUE(Running->End());
}

// With the check off the stored reader is believed, and its port runs at its working rate.
TEST_F(Startup, WithTheCheckOffNothingIsLookedFor) {
    FitReaders("laser");
    WriteSettings(DeviceLaser, {{&general::CheckReaderStatus, '0'}});
    StartReady();
    EXPECT_NE(Wire->Log().find("event opened com1"), std::string::npos);
    EXPECT_EQ(Wire->Log().find("rx com1 04 A3"), std::string::npos);
    EXPECT_EQ(Wire->Log().find("event opened com2"), std::string::npos);
    ExpectFile(DeviceLaser);
    ExpectScan("1 AB12", "AB12\n");
    EXPECT_TRUE(Running->End());
}

TEST_F(Startup, AShortFileCountsAsNone) {
    FitReaders("1d");
    WriteSettings(DeviceImager, {{&general::AutoEnter, '0'}});
    WriteWholeFile(SettingsPath(), ReadWholeFile(SettingsPath()).substr(0, FileSize - 1));
    StartReady();
    ExpectFile(Device1D);
    ExpectScan("A AB12", "AB12\n");
    EXPECT_TRUE(Running->End());
}

// All words are out of range: a 1D reader is believed to be there, and does not answer.
TEST_F(Startup, AFileFullOfRubbishEndsInAMessage) {
    FitReaders("imager");
    WriteWholeFile(SettingsPath(), std::string(FileSize, '\xFF'));
    ExpectFailure("Failed to initialize BC reader!!");
}

TEST_F(Startup, AnotherReaderThanStoredGetsItsDefaults) {
    FitReaders("laser");
    WriteSettings(DeviceImager, {{&general::IncludeCodeType, '1'}});
    StartReady();
    EXPECT_NE(Wire->Log().find("event defaults com1"), std::string::npos);
    ExpectFile(DeviceLaser);
    // What belongs to no reader stays.
    ExpectScan("1 AB12", "AAB12\n");
    EXPECT_TRUE(Running->End());
}

TEST_F(Startup, AReaderAtAnotherSpeedIsBroughtToItsWorkingOne) {
    FitReaders("imager", "none", {"--barcode-rate", "9600"});
    WriteSettings(DeviceImager);
    StartReady();
    EXPECT_NE(Wire->Log().find("event rate com1 115200"), std::string::npos);
    ExpectScan("3 Faster", "Faster\n");
    EXPECT_TRUE(Running->End());
}

TEST_F(Startup, NoReader) {
    FitReaders("none");
    ExpectFailure("No reader device!!");
    EXPECT_TRUE(ReadWholeFile(SettingsPath()).empty());
}

TEST_F(Startup, NoBarcodePort) {
    ExpectFailure("Failed to turn barcode reader on!!");
    WriteSettings(DeviceLaser, {{&general::CheckReaderStatus, '0'}});
    ExpectFailure("Failed to turn barcode reader on!!");
}

TEST_F(Startup, NoRfidPort) {
    FitReaders("imager");
    Wire->Command("unplug com2");
    ExpectFailure("Failed to turn RFID reader on!!");
}

// Nobody could dismiss a box there.
TEST_F(Startup, WithoutADisplayAFailureIsSaidAndEndsTheProgram) {
    const struct {
        const char* Said;
        std::function<void()> Prepare;
    } failures[] = {{"Failed to turn barcode reader on!! (20001)", [] {}},
                    {"No reader device!! (20003)", [this] { FitReaders("none"); }},
                    {"Failed to initialize Corvin!! (20022)",
                     [this] { std::filesystem::create_directory(SettingsPath()); }},
                    {"-DecodeEvent belongs to another user or is open to others",
                     [this] {
                         std::filesystem::remove(SettingsPath());
                         FitReaders("imager");
                         const std::string event = "/vantrel-" + layer::TerminalIdentity() + "-DecodeEvent";
                         const mode_t mask = umask(0);
                         sem_close(sem_open(event.c_str(), O_CREAT, 0666, 0));
                         umask(mask);
                     }},
                    {"windows", [this] {
                         std::filesystem::remove_all(Terminal.Path("windows"));
                         WriteWholeFile(Terminal.Path("windows"), "");
                     }}};
    for (const auto& failure : failures) {
        failure.Prepare();
        std::string said;
        const std::string command = std::string(VANTREL_PROGRAMS) + "/vantrel 2>&1";
        EXPECT_EQ(RunProgram("env", {"QT_QPA_PLATFORM=offscreen", "sh", "-c", command}, &said), 1)
            << failure.Said;
        EXPECT_NE(said.find(failure.Said), std::string::npos) << said;
    }
}

TEST_F(Startup, AReaderThatRefusesItsConfiguration) {
    FitReaders("imager");
    Wire->Command("fault nak-params 2 x2");
    ExpectFailure("Failed to initialize Corvin!!");
}

// The settings come to the front, once, and the second program is gone.
TEST_F(Startup, ASecondStartShowsTheSettingsOfTheFirst) {
    FitReaders("laser");
    WriteSettings(DeviceLaser, {{&general::CheckReaderStatus, '0'}});
    StartReady();
    const std::size_t windows = Desktop.Windows().size();
    Vantrel second;
    EXPECT_EQ(second.Ended(), 0);
    EXPECT_TRUE(SettingsOpen());
    EXPECT_LE(Desktop.Windows().size(), windows + 2) << "the second start left windows";
    // Both readers are off while the settings are open.
    Wire->Forget();
    Trigger({"press", "100"});
    EXPECT_FALSE(Wire->Saw("rx com1 04 E4", 200));
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

}  // namespace
