// The RFID reader beside the barcode reader, alone, come and gone.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <thread>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"

namespace {

constexpr const char* Uid = "E007000012AB34CD";

class Rfid : public EndToEnd {
  protected:
    // The typed lines in alphabetical order: which reader comes first is open.
    std::vector<std::string> TypedLines(std::size_t count) {
        std::istringstream text(Desktop.Typed(count, 8000));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(text.eof() ? "unfinished: " + line : line);
        }
        std::ranges::sort(lines);
        return lines;
    }
};

// Greeting, line and blocks come in two pieces.
TEST_F(Rfid, OnePressReadsALabelAndATag) {
    FitKnownReaders("imager",
                    {{&general::ActiveDevice, '3'},
                     {&general::DataOutput, '7'},
                     {&general::ReadRfidData, '1'},
                     {&general::UseDelimiter, '1'},
                     {&general::RfidMaximumLength, 8}},
                    "90");
    Wire->Command("fault com2 split 3 25 always");
    const auto messages = StartProgram("vantrel-watch", {"--messages"});
    StartReady();
    const std::string tag = std::string(Uid) + ",TagData1";
    for (int round = 0; round < 5; ++round) {
        const std::string data = "Label " + std::to_string(round);
        Wire->Command("label 3 " + data);
        Wire->Command(std::string("tag I ") + Uid + " TagData1 and more");
        Wire->Forget();
        ASSERT_TRUE(PressTrigger());
        std::vector<std::string> expected = {tag, data};
        EXPECT_EQ(TypedLines(data.size() + tag.size() + 2), expected) << "round " << round;
        Trigger({"up"});
        std::string copies;
        for (int line = 0; line < 4; ++line) {
            copies += messages->ReadLine().value_or("") + "\n";
        }
        EXPECT_NE(copies.find("\"source\":7,\"codeType\":\"I\",\"length\":7,\"uid\":\"\",\"text\":\"" + data),
                  std::string::npos)
            << copies;
        EXPECT_NE(copies.find("\"source\":32,\"codeType\":\"I\",\"length\":8,\"uid\":\"" + std::string(Uid) +
                              "\",\"text\":\"TagData1\""),
                  std::string::npos)
            << copies;
        EXPECT_TRUE(Wire->Saw("event closed com2")) << "the channel stays open";
    }
    messages->Signal(SIGTERM);
    EXPECT_TRUE(messages->Wait());
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

// Found at another speed, configured, and working at its own.
TEST_F(Rfid, AReaderAloneIsFoundAndConfigured) {
    FitReaders("none", "100", {"--rfid-rate", "9600"});
    Start();
    Wire->Command(std::string("tag M ") + Uid);
    ASSERT_TRUE(WaitUntilReady(30000));
    EXPECT_NE(Wire->Log().find("event rate com2 57600"), std::string::npos);
    EXPECT_EQ(TypedLines(17), std::vector<std::string>{Uid});
    EXPECT_EQ(StoredReaders(), DeviceRfid);
    EXPECT_TRUE(Running->End());
    ExpectNothingLeft();
}

TEST_F(Rfid, AReaderThatHasComeIsAddedAndOneThatHasGoneIsDropped) {
    WriteSettings(DeviceImager, {{&general::ActiveDevice, '3'}});
    FitReaders("imager", "90");
    StartReady();
    EXPECT_EQ(StoredReaders(), DeviceImager | DeviceRfid);
    Wire->Command(std::string("tag I ") + Uid);
    Trigger({"down"});
    EXPECT_EQ(TypedLines(17), std::vector<std::string>{Uid});
    Trigger({"up"});
    EXPECT_TRUE(Running->End());

    FitReaders("imager", "none");
    StartReady();
    EXPECT_EQ(StoredReaders(), DeviceImager);
    // "Active Device" still names both; the one that has gone must not fail at the press.
    EXPECT_EQ(Scan("3 AB12", 5), "AB12\n");
    EXPECT_TRUE(Running->End());
}

// Opening the settings and ending the program each end a search at once, not with its five seconds.
TEST_F(Rfid, ASearchEndsWithWhatEndsIt) {
    FitKnownReaders("imager", {{&general::ActiveDevice, '3'}, {&general::RfidReadDuration, 5}}, "90");
    for (const bool bySettings : {true, false}) {
        StartReady();
        Wire->Forget();
        Trigger({"press", "20"});
        ASSERT_TRUE(Wire->Saw("event searching com2"));
        if (bySettings) {
            EXPECT_EQ(RunProgram("vantrel", {}), 0);
            EXPECT_TRUE(Wire->Saw("event closed com2", 2500));
        }
        EXPECT_TRUE(Running->End());
        EXPECT_TRUE(Wire->Saw("event closed com2", 2500));
        ExpectNothingLeft();
    }
}

// A reader that is switched on but does not greet: the message comes, and the program ends.
TEST_F(Rfid, AReaderThatDoesNotAnswerAtAPress) {
    FitKnownReaders("laser", {{&general::ActiveDevice, '3'}}, "90");
    StartReady();
    Wire->Command("announce never");
    Trigger({"down"});
    EXPECT_TRUE(ErrorBoxSays(Desktop, "Failed to initialize RFID reader!!"));
    DismissErrorBox(Desktop);
    EXPECT_EQ(Running->Ended(), 0);
    ExpectNothingLeft();
}

// Fifty reads in a row leave no thread and no file behind.
TEST_F(Rfid, ManyReadsLeaveNothingBehind) {
    FitKnownReaders("none", {}, "90");
    Start();
    Wire->Command(std::string("tag I ") + Uid);
    ASSERT_TRUE(WaitUntilReady());
    EXPECT_EQ(Desktop.Typed(17), std::string(Uid) + "\n");
    const auto entries = [&](const std::string& folder) {
        const auto path = "/proc/" + std::to_string(Running->Id()) + "/" + folder;
        return std::distance(std::filesystem::directory_iterator(path), {});
    };
    std::ptrdiff_t threads = 0, files = 0;
    for (int read = 0; read < 50; ++read) {
        ASSERT_TRUE(Wire->Saw("event closed com2")) << "read " << read;
        if (read == 3) {
            // What is made once, at a first sound say, is there.
            Pause(500);
            threads = entries("task");
            files = entries("fd");
        }
        Wire->Forget();
        for (int tries = 0; tries < 50 && Wire->Count("event opened com2") == 0; ++tries) {
            Trigger({"press", "20"});
        }
        ASSERT_EQ(Desktop.Typed(17), std::string(Uid) + "\n") << "read " << read;
    }
    ASSERT_TRUE(Wire->Saw("event closed com2"));
    // One of each read would be 46 more; Wine's own come and go.
    EXPECT_TRUE(Within(5000, [&] { return entries("task") <= threads + 5; }));
    EXPECT_TRUE(Within(5000, [&] { return entries("fd") <= files + 5; }));
    EXPECT_TRUE(Running->End());
}

}  // namespace
