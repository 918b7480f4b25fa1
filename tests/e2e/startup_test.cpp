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

class Startup : public EndToEnd {};

struct Course : Named {
    const char* Barcode;
    const char* Command;  // to the readers
    WORD Stored;          // the readers of the file that is there before, 0: none; and what it has set
    const Setting* Changed;
    WORD Value;
    const char* Seen;  // of the readers
    const char* Unseen;
    WORD Found;
    const char* Label;
    const char* Typed;
};

class StartupWith : public Startup, public testing::WithParamInterface<Course> {};

TEST_P(StartupWith, ComesUpAndReads) {
    const Course& course = GetParam();
    FitReaders(course.Barcode);
    Wire->Command(course.Command);
    if (course.Stored != 0) {
        WriteSettings(course.Stored, {{course.Changed, course.Value}});
    }
    StartReady();
    const std::string log = Wire->Log();
    EXPECT_NE(log.find(course.Seen), std::string::npos) << log;
    EXPECT_EQ(log.find(course.Unseen), std::string::npos) << log;
    // The file that a start leaves: current version, these readers.
    EXPECT_EQ(ReadWholeFile(SettingsPath()).size(), 1100u);
    EXPECT_EQ(SettingsWord(0), 1);
    EXPECT_EQ(SettingsWord(2), 1);
    EXPECT_EQ(StoredReaders(), course.Found);
    EXPECT_EQ(Scan(course.Label, std::string(course.Typed).size()), course.Typed);
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

constexpr const char *LookedFor = "rx com1 04 A3", *SetUpAnew = "event defaults com1";

INSTANTIATE_TEST_SUITE_P(
    All, StartupWith,
    testing::Values(Course{"NoFile", "imager", "state", 0, nullptr, 0, SetUpAnew, "com9", DeviceImager,
                           "3 Fresh", "Fresh\n"},
                    Course{"AFileThatFits", "imager", "state", DeviceImager, &general::IncludeCodeLength, '1',
                           LookedFor, SetUpAnew, DeviceImager, "3 Kept", "004Kept\n"},
                    // The stored reader is believed, and its port runs at its working rate.
                    Course{"CheckOff", "laser", "state", DeviceLaser, &general::CheckReaderStatus, '0',
                           "event opened com1", LookedFor, DeviceLaser, "1 AB12", "AB12\n"},
                    // What belongs to no reader stays.
                    Course{"AnotherReader", "laser", "state", DeviceImager, &general::IncludeCodeType, '1',
                           SetUpAnew, "com9", DeviceLaser, "1 AB12", "AAB12\n"},
                    Course{"AnotherSpeed", "imager", "rate com1 9600", DeviceImager, &general::AutoEnter, '0',
                           "event rate com1 115200", "com9", DeviceImager, "3 Faster", "Faster"}),
    NameOf);

struct Failure : Named {
    const char* Barcode;  // null: no port
    bool Known;           // from the settings file
    const char* Command;
    const char* Text;
    std::size_t Rubbish = 0;  // of such a size is the settings file that is there before
};

class FailedStartup : public Startup, public testing::WithParamInterface<Failure> {};

// The program says so, and ends with code 0 when the box is dismissed; nothing is left.
TEST_P(FailedStartup, EndsWithAMessage) {
    const Failure& failure = GetParam();
    if (failure.Barcode != nullptr) {
        failure.Known ? FitKnownReaders(failure.Barcode) : FitReaders(failure.Barcode);
        Wire->Command(failure.Command);
    }
    if (failure.Rubbish != 0) {
        WriteWholeFile(SettingsPath(), std::string(failure.Rubbish, '\xFF'));
    }
    Start();
    EXPECT_TRUE(ErrorBoxSays(Desktop, failure.Text));
    EXPECT_EQ(Running->Ended(0), -1) << "it ended before the box was dismissed";
    DismissErrorBox(Desktop);
    EXPECT_EQ(Running->Ended(), 0);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(
    Of, FailedStartup,
    testing::Values(
        Failure{"NoReader", "none", false, "state", "No reader device!!"},
        Failure{"NoBarcodePort", nullptr, false, "", "Failed to turn barcode reader on!!"},
        Failure{"NoPortOfAKnownReader", "laser", true, "unplug com1", "Failed to turn barcode reader on!!"},
        Failure{"NoRfidPort", "imager", false, "unplug com2", "Failed to turn RFID reader on!!"},
        Failure{"RefusedConfiguration", "imager", false, "fault nak-params 2 x2",
                "Failed to initialize Corvin!!"},
        // All words are out of range: a 1D reader is believed to be there, and does not answer.
        Failure{"AFileFullOfRubbish", "imager", false, "state", "Failed to initialize BC reader!!", 1100}),
    NameOf);

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

}  // namespace
