// One line on a real pseudo-terminal: speed, pace, joined and split messages, what is lost.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "simulator/line.h"

namespace readers {
namespace {

namespace fs = std::filesystem;

// Notes what it hears.
class Listener : public Reader {
  public:
    void Receive(std::span<const std::uint8_t> bytes) override { Heard += TextOf(bytes); }
    void PowerOff() override {}
    void PowerOn() override {}
    bool Command(std::string_view, std::string_view, std::string&) override { return false; }
    std::vector<std::string> State() const override { return {}; }
    std::vector<std::string> Parameters() const override { return {}; }

    std::string Heard;
};

fs::path FreshFolder() {
    char pattern[] = "/tmp/readers-XXXXXX";
    return mkdtemp(pattern);
}

class LineTest : public testing::Test {
  protected:
    LineTest() {
        std::string problem;
        EXPECT_TRUE(Wires.Terminal().Plug(problem)) << problem;
        Wires.Attach(&Ear);
        Wires.ShowWire(false);
        Port = open((Folder / "COM1").c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        SetSpeed(B9600);
        Pass(20);
    }
    ~LineTest() override {
        close(Port);
        Wires.Terminal().Unplug();
        fs::remove_all(Folder);
    }
    void SetSpeed(speed_t speed) {
        termios settings{};
        tcgetattr(Port, &settings);
        cfsetspeed(&settings, speed);
        tcsetattr(Port, TCSANOW, &settings);
    }
    void Pass(int milliseconds) {
        Loop.At(Clock::now() + Milliseconds(milliseconds), [this] { Loop.Stop(); });
        Loop.Run();
    }
    std::string Arrived() {
        std::array<char, 4096> buffer;
        const ssize_t got = read(Port, buffer.data(), buffer.size());
        return got > 0 ? std::string(buffer.data(), static_cast<std::size_t>(got)) : "";
    }
    void Arm(std::string_view words) {
        const auto all = WordsOf(words);
        std::string problem;
        ASSERT_TRUE(Wires.Faults().Arm(*FindFault(all.front()), std::span(all).subspan(1), problem));
    }

    const fs::path Folder = FreshFolder();
    EventLoop Loop;
    Console Out{Loop};
    Listener Ear;
    Line Wires{Loop, Out, "com1", Folder / "COM1", 9600};
    int Port = -1;
};

// 192 bytes at 9600 bit/s need 200 ms; being late is the machine's fault, being early would be the line's.
TEST_F(LineTest, BytesNeedTheirTime) {
    Wires.Send(Bytes(192, 'x'));
    Pass(100);
    std::size_t arrived = Arrived().size();
    EXPECT_LE(arrived, 96u);
    for (int wait = 0; arrived < 192 && wait < 50; ++wait) {
        Pass(20);
        arrived += Arrived().size();
    }
    EXPECT_EQ(arrived, 192u);
}

TEST_F(LineTest, NothingPassesBetweenDifferentSpeeds) {
    SetSpeed(B38400);
    ASSERT_EQ(write(Port, "v", 1), 1);
    Wires.Send(BytesOf("answer"));
    Pass(40);
    EXPECT_EQ(Ear.Heard, "");
    EXPECT_EQ(Arrived(), "");
    Arm("garbage");
    Wires.Send(BytesOf("answer"));
    Pass(40);
    const std::string garbage = Arrived();
    EXPECT_EQ(garbage.size(), 6u);
    EXPECT_NE(garbage, "answer");
    SetSpeed(B9600);
    Wires.Send(BytesOf("answer"));
    Pass(40);
    EXPECT_EQ(Arrived(), "answer");
}

TEST_F(LineTest, FaultsOfTheWire) {
    Arm("join");
    Wires.Send(BytesOf("one"));
    Pass(40);
    EXPECT_EQ(Arrived(), "");
    Wires.Send(BytesOf("two"));
    Pass(40);
    EXPECT_EQ(Arrived(), "onetwo");
    Arm("split 2 150");
    Wires.Send(BytesOf("three"));
    Pass(60);
    EXPECT_EQ(Arrived(), "th");
    Pass(200);
    EXPECT_EQ(Arrived(), "ree");
    Arm("mute");
    Wires.Send(BytesOf("four"));
    Wires.Send(BytesOf("five"));
    Pass(60);
    EXPECT_EQ(Arrived(), "five");
}

}  // namespace
}  // namespace readers
