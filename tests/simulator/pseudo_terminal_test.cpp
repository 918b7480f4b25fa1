// The real pseudo-terminal: openings and closings noticed, what a closed port must not keep.

#include <fcntl.h>
#include <gtest/gtest.h>
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
    // Opened again before anybody looked.
    int port = OpenPort();
    Settle();
    close(port);
    port = OpenPort();
    Settle();
    EXPECT_EQ(Log, expected + "oco");
    close(port);
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
    close(port);
}

}  // namespace
}  // namespace readers
