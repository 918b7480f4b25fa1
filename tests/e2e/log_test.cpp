// What the program says of itself: a line, with its priority, for each event that matters, and no scanned
// data in it.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>

#include "settings/record.h"
#include "tests/e2e/end_to_end.h"
#include "tests/support/x_server.h"

namespace {

// The service manager's end of NOTIFY_SOCKET.
class Manager {
  public:
    explicit Manager(const std::string& path) : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~Manager() { close(socket_); }
    Manager(const Manager&) = delete;
    // How many words with this beginning have come until now. It has to be asked before ten wait.
    int Count(const std::string& beginning) {
        char word[200];
        for (ssize_t size = 0; (size = recv(socket_, word, sizeof word, MSG_DONTWAIT)) > 0;) {
            words_.emplace_back(word, static_cast<std::size_t>(size));
        }
        return static_cast<int>(std::count_if(words_.begin(), words_.end(), [&](const std::string& each) {
            return each.starts_with(beginning);
        }));
    }

  private:
    int socket_;
    std::vector<std::string> words_;
};

TEST_F(EndToEnd, WhatMattersIsInTheLog) {
    const auto consumer = StartProgram("vantrel-watch", {"--messages"});
    const std::string com1 = Terminal.Path("COM1"), path = Terminal.Path("log"),
                      trace = Terminal.Path("trace");
    Manager manager(Terminal.Path("notify"));
    FitReaders("imager");
    Wire->Command("fault nak-params 2");
    WriteSettings(DeviceImager, {{&general::DataOutput, '7'}});
    // 5 s of it while a consumer hangs.
    const auto scan = [this] { EXPECT_EQ(Scan("1 SECRET", 7, 20000), "SECRET\n"); };
    const struct {
        std::string Line;
        std::function<void()> Cause;
    } events[] = {
        {"<6>vantrel: keys go to xtest: ",
         [&] {
             const int standard = dup(STDERR_FILENO);
             const int log = open(path.c_str(), O_CREAT | O_APPEND | O_WRONLY, 0600);
             dup2(log, STDERR_FILENO);
             Start({"JOURNAL_STREAM=8:1", "VANTREL_TRACE=" + trace,
                    "NOTIFY_SOCKET=" + Terminal.Path("notify"), "WATCHDOG_USEC=8000000"},
                   {"--verbose"});
             dup2(standard, STDERR_FILENO);
             close(log), close(standard);
         }},
        {"<7>vantrel: asking for the RFID reader, or its kind, at 57600 bit/s", [] {}},
        {"<5>vantrel: 2D imager found at 115200 bit/s", [&] { ASSERT_TRUE(WaitUntilReady()); }},
        {"<4>vantrel: the scan engine has refused a packet: cause 2", [] {}},
        {"<6>vantrel: the 2D imager is set up", [] {}},
        {"<7>vantrel: the barcode reader is on", [] {}},
        {"<7>vantrel: a read was handed on", scan},
        {"<6>vantrel: a record that nobody has taken was replaced", scan},
        {"<4>vantrel: a packet of the barcode reader was refused: its checksum is wrong",
         [&] { Wire->Command("fault checksum"), scan(); }},
        {"does not answer; it is left out until it does", [&] { consumer->Signal(SIGSTOP), scan(); }},
        {"<4>vantrel: " + com1 + " has gone", [&] { Wire->Command("unplug com1"); }},
        {"<5>vantrel: " + com1 + " is back", [&] { Wire->Command("plug com1"), scan(); }},
        {"<3>vantrel: Failed to set barcode reader!! (20011)",
         [&] { Wire->Command("unplug com1"), Pause(500), Trigger({"down"}); }},
        {"<3>vantrel: ended by signal 6", [&] { Running->Signal(SIGABRT); }},
        {"libc.so.6",
         [&] { EXPECT_EQ(Running->Ended(), 128 + SIGABRT) << "where it was, and then the end"; }},
    };
    std::string log;
    std::size_t at = 0;
    for (const auto& [line, cause] : events) {
        cause();
        const bool said = Within(8000, [&, &text = line] {
            log = ReadWholeFile(path);
            manager.Count("");
            return log.find(text, at) != std::string::npos;
        });
        ASSERT_TRUE(said) << line << " comes not in turn in\n" << log;
        at = log.find(line, at) + 1;
    }
    EXPECT_EQ(log.find("SECRET"), std::string::npos);
    EXPECT_EQ(manager.Count("READY=1\nSTATUS=The readers are ready"), 1);
    EXPECT_TRUE(Within(6000, [&] { return manager.Count("WATCHDOG=1") >= 3; })) << "also under a box";
    // The trace holds the scans, and nobody else reads it.
    struct stat status {};
    ASSERT_EQ(stat(trace.c_str(), &status), 0);
    EXPECT_TRUE(status.st_mode % 01000 == 0600 && status.st_size > 0) << status.st_mode;
}

TEST_F(EndToEnd, QuestionsAndMistakesOnTheCommandLineStartNothing) {
    const struct {
        std::string Words;
        int Code;
        std::string Said;
    } rows[] = {{"--help", 0, "vantrel: usage: vantrel [--settings]"},
                {"--version", 0, "vantrel: Vantrel v1.29\n"},
                {"--settings --verbos", 2, "vantrel: usage: "}};
    for (const auto& row : rows) {
        std::string output;
        const std::string command = VANTREL_PROGRAMS "/vantrel " + row.Words + " 2>&1";
        EXPECT_EQ(RunProgram("sh", {"-c", command}, &output), row.Code) << output;
        EXPECT_TRUE(output.find(row.Said) != std::string::npos &&
                    output.find("keys go to") == std::string::npos)
            << output;
    }
    // Whoever reads the diary may go.
    const std::string code = Terminal.Path("code");
    RunProgram("sh", {"-c", "{ sleep 1; env --default-signal=PIPE " VANTREL_PROGRAMS
                            "/vantrel --version 2>&1; echo $? >" +
                                code + "; } | true"});
    EXPECT_EQ(ReadWholeFile(code), "0\n");
}

// One takes the connection of a start and says nothing; another one stops while the program runs.
TEST_F(EndToEnd, ADisplayThatDoesNotAnswerIsGivenUp) {
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(server, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(server, 1), 0);
    ASSERT_EQ(getsockname(server, reinterpret_cast<sockaddr*>(&address), &size), 0);
    Vantrel start({"DISPLAY=127.0.0.1:" + std::to_string(ntohs(address.sin_port) - 6000)});
    const std::string usual = std::getenv("DISPLAY");
    auto display = std::make_unique<XServer>();
    FitKnownReaders("laser", {{&general::EnableVibrator, '1'}, {&general::VibrateDuration, 30}});
    Running = std::make_unique<Vantrel>(std::vector<std::string>{"WATCHDOG_USEC=4000000"});
    ASSERT_TRUE(WaitUntilReady());
    Wire->Command("label 1 AB");
    ASSERT_TRUE(PressTrigger());
    ASSERT_TRUE(Within(5000, [&] { return ReadWholeFile(Terminal.Path("VIBRATOR")).starts_with("1"); }));
    display->Stop();
    Vantrel opensSettings({"QT_QPA_PLATFORM=offscreen", "VANTREL_KEYBOARD=none"});
    EXPECT_EQ(Running->Ended(30000), 1);
    EXPECT_TRUE(ReadWholeFile(Terminal.Path("VIBRATOR")).starts_with("0"));
    opensSettings.Signal(SIGTERM);  // it had no answer, and has stayed
    EXPECT_NE(opensSettings.Ended(), -1);
    ExpectNothingShared();
    EXPECT_EQ(start.Ended(20000), 1);
    close(server);
    display.reset();
    setenv("DISPLAY", usual.c_str(), 1);
}

}  // namespace
