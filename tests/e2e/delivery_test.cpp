// That no consumer can keep scans from going where they go; which outputs a setting names is told in
// tests/scan.
#include <gtest/gtest-spi.h>

#include <csignal>
#include <thread>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"
#include "tests/e2e/wine_screen.h"

namespace {

// What a watcher prints: as many lines as are awaited, and what else comes right after.
std::vector<std::string> LinesOf(ChildProcess& watcher, std::size_t awaited) {
    std::vector<std::string> lines;
    while (auto line = watcher.ReadLine(lines.size() < awaited ? 10000 : 300)) {
        lines.push_back(*line);
    }
    return lines;
}

// Whether the watcher comes to say so.
bool Says(ChildProcess& watcher, const std::string& text) {
    while (const auto line = watcher.ReadLine()) {
        if (line->find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

class Delivery : public EndToEnd {
  protected:
    void StartLaser(WORD output, const std::vector<SettingValue>& more = {}) {
        std::vector<SettingValue> values = {{&general::DataOutput, output}};
        values.insert(values.end(), more.begin(), more.end());
        FitKnownReaders("laser", values);
        StartReady();
    }
    // A scan that need not be typed; true when the reader knows that it was taken.
    bool Read(const std::string& label, int milliseconds = 5000) {
        Wire->Forget();
        Wire->Command("label " + label);
        const bool read = PressTrigger() && Wire->Saw("event decode-acked", milliseconds);
        Trigger({"up"});
        return read;
    }
};

// The engine sends a packet again when it is refused, arrives in two pieces or gets no answer it can read.
TEST_F(Delivery, ALabelIsTypedWholeAndOnceThoughPacketsAreResent) {
    StartLaser('1');
    Wire->Command("packet-size 6");
    for (const char* fault : {"checksum", "checksum after1", "checksum x2 after1", "com1 split 5 60"}) {
        Wire->Command(std::string("fault ") + fault);
        EXPECT_TRUE(Read("1 ABCDEFGH")) << fault;
        EXPECT_EQ(Desktop.Typed(9), "ABCDEFGH\n") << fault;
    }
    EXPECT_NE(Wire->Log().find("why=nak"), std::string::npos);
    EXPECT_EQ(Desktop.Typed(1, 500), "");
    for (const char* fault : {"checksums", "checksum 3", "com1 split 5", "com1 split 5 x"}) {
        EXPECT_NONFATAL_FAILURE(Wire->Command(std::string("fault ") + fault), ": error ");
    }
}

// No consumer of the queue: the newest record takes the place of the one before, and a late consumer gets it.
TEST_F(Delivery, TheNewestRecordWaits) {
    StartLaser('5');
    for (const std::string label : {"FIRST", "SECOND", "THIRD"}) {
        // Keys come after the record.
        ASSERT_EQ(Scan("1 " + label, label.size() + 1), label + "\n");
    }
    const auto event = StartProgram("vantrel-watch", {"--event"});
    const auto lines = LinesOf(*event, 1);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("\"text\":\"THIRD\""), std::string::npos);
    EXPECT_TRUE(Running->End());
}

// A broadcast waits for a hanging program once, 5 s at most; then scans come as fast as ever.
TEST_F(Delivery, AHangingConsumerIsLeftOut) {
    const auto hanging = StartProgram("vantrel-watch", {"--messages"});
    const auto healthy = StartProgram("vantrel-watch", {"--messages"});
    StartLaser('3');
    EXPECT_EQ(Scan("1 BEFORE", 7), "BEFORE\n");
    EXPECT_EQ(LinesOf(*hanging, 2).size(), 2u);
    hanging->Signal(SIGSTOP);
    ASSERT_TRUE(Read("1 HANGS"));
    EXPECT_EQ(Desktop.Typed(6, 20000), "HANGS\n");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Scan("1 QUICK", 6), "QUICK\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(LinesOf(*healthy, 6).size(), 6u);
    // It is heard again once it has answered.
    hanging->Signal(SIGCONT);
    // Wine forgets a message that its sender no longer waits for.
    EXPECT_NE(Says(*hanging, "HANGS"), OnWine());
    EXPECT_EQ(Scan("1 AFTER", 6), "AFTER\n");
    EXPECT_TRUE(Says(*hanging, "AFTER"));
    // One that dies is no concern of anybody.
    healthy->Signal(SIGKILL);
    healthy->Wait();
    EXPECT_EQ(Scan("1 ALONE", 6), "ALONE\n");
    EXPECT_TRUE(Says(*hanging, "ALONE"));
    EXPECT_TRUE(Running->End());
}

// Both channels, through an orderly end and through a kill.
TEST_F(Delivery, ConsumersStayThroughRestarts) {
    const auto event = StartProgram("vantrel-watch", {"--event"});
    const auto messages = StartProgram("vantrel-watch", {"--messages"});
    StartLaser('6');
    for (const int ending : {SIGTERM, SIGKILL, 0}) {
        ASSERT_TRUE(Read("1 SIGNAL" + std::to_string(ending)));
        const std::string text = "\"text\":\"SIGNAL" + std::to_string(ending) + "\"";
        EXPECT_TRUE(Says(*event, text));
        EXPECT_TRUE(Says(*messages, text));
        if (ending != 0) {
            Running->Signal(ending);
            Running->Ended();
            StartReady();
        }
    }
    EXPECT_TRUE(Running->End());
    // The last user takes the names away: that is the watcher.
    event->Signal(SIGTERM);
    messages->Signal(SIGTERM);
    EXPECT_TRUE(event->Wait());
    EXPECT_TRUE(messages->Wait());
    ExpectNothingLeft();
}

// Of two terminals on one machine each has its own program, names and scans. The other one has no reader.
TEST_F(Delivery, AnotherTerminalIsAnotherProgram) {
    StartLaser('6');
    const std::vector<std::string> elsewhere = {
        "VANTREL_TERMINAL=" + (OnWine() ? WineTerminal() + "\\other" : Terminal.Path("other")),
        "VANTREL_COM1=COM9"};
    const auto event = StartProgram("vantrel-watch", {"--event"}, elsewhere);
    const auto messages = StartProgram("vantrel-watch", {"--messages"}, elsewhere);
    Vantrel other(elsewhere);
    EXPECT_TRUE(ErrorBoxSays(Desktop, "Failed to turn barcode reader on!!"));
    EXPECT_TRUE(Read("1 AB12"));
    EXPECT_TRUE(LinesOf(*event, 0).empty());
    EXPECT_TRUE(LinesOf(*messages, 0).empty());
    DismissErrorBox(Desktop);
    EXPECT_EQ(other.Ended(), 0);
    EXPECT_TRUE(Read("1 AGAIN"));
    EXPECT_FALSE(SettingsOpen(true, 0));
    EXPECT_TRUE(Running->End());
}

// While nothing happens the program does nothing: no clock tick of processor time in 30 s.
TEST_F(Delivery, NothingIsUsedWhileNothingHappens) {
    StartLaser('7');
    EXPECT_EQ(Scan("1 A", 2), "A\n");
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const long before = ProcessorTicks(Running->Id());
    std::this_thread::sleep_for(std::chrono::seconds(30));
    EXPECT_LE(ProcessorTicks(Running->Id()) - before, 1);
    EXPECT_TRUE(Running->End());
}

}  // namespace
