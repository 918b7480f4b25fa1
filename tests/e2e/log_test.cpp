// What the program says of itself: a line, with its priority, for each event that matters, and no scanned
// data in it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"

namespace {

TEST_F(EndToEnd, WhatMattersIsInTheLog) {
    const auto consumer = StartProgram("vantrel-watch", {"--messages"});
    const std::string com1 = Terminal.Path("COM1"), path = Terminal.Path("log"),
                      trace = Terminal.Path("trace");
    FitReaders("imager");
    Wire->Command("fault nak-params 2");
    WriteSettings(DeviceImager, {{&general::DataOutput, '7'}});
    const auto scan = [this] {
        Wire->Forget();
        Wire->Command("label 1 SECRET");
        EXPECT_TRUE(PressTrigger());
        EXPECT_EQ(Desktop.Typed(7, 20000), "SECRET\n");  // 5 s of it while a consumer hangs
        Trigger({"up"});
    };
    const struct {
        std::string Line;
        std::function<void()> Cause;
    } events[] = {
        {"<6>vantrel: keys go to xtest: ",
         [&] {
             const int standard = dup(STDERR_FILENO);
             const int log = open(path.c_str(), O_CREAT | O_APPEND | O_WRONLY, 0600);
             dup2(log, STDERR_FILENO);
             Start({"JOURNAL_STREAM=8:1", "VANTREL_TRACE=" + trace});
             dup2(standard, STDERR_FILENO);
             close(log), close(standard);
         }},
        {"<5>vantrel: 2D imager found at 115200 bit/s", [&] { ASSERT_TRUE(WaitUntilReady()); }},
        {"<4>vantrel: the scan engine has refused a packet: cause 2", [] {}},
        {"<6>vantrel: the 2D imager is set up", [] {}},
        {"<6>vantrel: a record that nobody has taken was replaced", [&] { scan(), scan(); }},
        {"<4>vantrel: a packet of the barcode reader came broken and was refused",
         [&] { Wire->Command("fault checksum"), scan(); }},
        {"does not answer; it is left out until it does", [&] { consumer->Signal(SIGSTOP), scan(); }},
        {"<4>vantrel: " + com1 + " has gone", [&] { Wire->Command("unplug com1"); }},
        {"<5>vantrel: " + com1 + " is back", [&] { Wire->Command("plug com1"), scan(); }},
        {"<3>vantrel: Failed to set barcode reader!! (20011)",
         [&] { Wire->Command("unplug com1"), Pause(500), Trigger({"down"}); }},
    };
    std::string log;
    std::size_t at = 0;
    for (const auto& [line, cause] : events) {
        cause();
        const bool said = Within(8000, [&, &text = line] {
            log = ReadWholeFile(path);
            return log.find(text, at) != std::string::npos;
        });
        ASSERT_TRUE(said) << line << " comes not in turn in\n" << log;
        at = log.find(line, at) + 1;
    }
    EXPECT_LE(std::count(log.begin(), log.end(), '\n'), 20) << log;
    EXPECT_EQ(log.find("SECRET"), std::string::npos);
    // The trace holds the scans, and nobody else reads it.
    struct stat status {};
    ASSERT_EQ(stat(trace.c_str(), &status), 0);
    EXPECT_TRUE(status.st_mode % 01000 == 0600 && status.st_size > 0) << status.st_mode;
}

}  // namespace
