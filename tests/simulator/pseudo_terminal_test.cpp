// The real pseudo-terminal: openings and closings noticed, links, speed, what a closed port must not keep.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

#include "simulator/pseudo_terminal.h"

namespace readers {
namespace {

namespace fs = std::filesystem;

fs::path FreshFolder() {
    char pattern[] = "/tmp/readers-XXXXXX";
    return mkdtemp(pattern);
}

class PseudoTerminalTest : public testing::Test {
  protected:
    ~PseudoTerminalTest() override {
        Port.Unplug();
        fs::remove_all(Folder);
    }
    int OpenPort() const { return open((Folder / "COM1").c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK); }
    void Settle() {
        Loop.At(Clock::now() + std::chrono::milliseconds(20), [this] { Loop.Stop(); });
        Loop.Run();
    }

    const fs::path Folder = FreshFolder();
    EventLoop Loop;
    std::string Log;
    PseudoTerminal Port{Loop,
                        Folder / "COM1",
                        {[this] { Log += 'o'; }, [this] { Log += 'c'; },
                         [this](std::span<const std::uint8_t> bytes) { Log += TextOf(bytes); }}};
    std::string Problem;
};

TEST_F(PseudoTerminalTest, EveryOpeningIsNoticedOnceAndInOrder) {
    ASSERT_TRUE(Port.Plug(Problem)) << Problem;
    std::string expected;
    for (int i = 0; i < 50; ++i) {
        const int port = OpenPort();
        ASSERT_GE(port, 0);
        if (i % 2 == 0) {
            Settle();
        }
        ASSERT_EQ(write(port, "w", 1), 1);
        close(port);
        Settle();
        expected += "owc";
    }
    EXPECT_EQ(Log, expected);
    EXPECT_FALSE(Port.IsOpen());
}

TEST_F(PseudoTerminalTest, ReopenedBeforeAnybodyLooked) {
    ASSERT_TRUE(Port.Plug(Problem)) << Problem;
    int port = OpenPort();
    Settle();
    close(port);
    port = OpenPort();
    Settle();
    EXPECT_EQ(Log, "oco");
    close(port);
}

TEST_F(PseudoTerminalTest, TwoUsersCountAsOneOpening) {
    ASSERT_TRUE(Port.Plug(Problem)) << Problem;
    const int first = OpenPort();
    const int second = OpenPort();
    Settle();
    close(first);
    Settle();
    EXPECT_TRUE(Port.IsOpen());
    ASSERT_EQ(write(second, "w", 1), 1);
    Settle();
    EXPECT_EQ(Log.back(), 'w');
    close(second);
    Settle();
    EXPECT_FALSE(Port.IsOpen());
    const int third = OpenPort();
    ASSERT_EQ(write(third, "z", 1), 1);
    Settle();
    EXPECT_EQ(Log.back(), 'z');
    close(third);
}

TEST_F(PseudoTerminalTest, UnreadBytesGoWithTheirReader) {
    ASSERT_TRUE(Port.Plug(Problem)) << Problem;
    int port = OpenPort();
    Settle();
    ASSERT_TRUE(Port.Write(BytesOf("stale")));
    close(port);
    Settle();
    port = OpenPort();
    Settle();
    char byte;
    EXPECT_LT(read(port, &byte, 1), 0);
    EXPECT_EQ(Log, "oco");
    termios settings{};
    tcgetattr(port, &settings);
    cfsetspeed(&settings, B57600);
    tcsetattr(port, TCSANOW, &settings);
    EXPECT_EQ(Port.HostRate(), 57600u);
    close(port);
}

TEST_F(PseudoTerminalTest, LinksAreReplacedAndOnlyItsOwnIsTakenAway) {
    fs::create_symlink("/nowhere", Folder / "COM1");
    ASSERT_TRUE(Port.Plug(Problem)) << Problem;
    EXPECT_EQ(fs::read_symlink(Folder / "COM1"), Port.Device());
    PseudoTerminal other(Loop, Folder / "COM1", {[] {}, [] {}, [](std::span<const std::uint8_t>) {}});
    ASSERT_TRUE(other.Plug(Problem)) << Problem;
    Port.Unplug();
    EXPECT_EQ(fs::read_symlink(Folder / "COM1"), other.Device());
    other.Unplug();
    EXPECT_TRUE(fs::is_empty(Folder));
    fs::create_directory(Folder / "COM1");
    EXPECT_FALSE(Port.Plug(Problem));
    EXPECT_NE(Problem, "");
}

}  // namespace
}  // namespace readers
