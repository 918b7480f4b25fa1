// The serial calls on real pseudo-terminals.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <future>
#include <memory>
#include <numeric>
#include <thread>

#include "platform/linux/serial/receive_queue.h"
#include "platform/serial.h"
#include "tests/platform/pseudo_terminal.h"
#include "tests/support/temporary_terminal.h"

namespace {

using Bytes = std::vector<BYTE>;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

class TtyTest : public testing::Test {
  protected:
    TtyTest() {
        reader_->LinkAs(terminal_.Path("COM1"));
        port_ = Open();
    }
    ~TtyTest() override {
        if (port_ != INVALID_HANDLE_VALUE)
            CloseHandle(port_);
    }

    static HANDLE Open(LPCWSTR name = TEXT("COM1:")) {
        return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    void Timeouts(DWORD interval, DWORD writeConstant = 0) {
        COMMTIMEOUTS timeouts{interval, 0, 0, 0, writeConstant};
        ASSERT_TRUE(SetCommTimeouts(port_, &timeouts));
    }
    void SetRate(DWORD rate) {
        DCB state{};
        GetCommState(port_, &state);
        state.BaudRate = rate;
        SetCommState(port_, &state);
    }
    // The bytes of one read, none when it failed.
    Bytes Read(DWORD size = 4096) {
        Bytes bytes(size);
        DWORD read = 0;
        readResult_ = ReadFile(port_, bytes.data(), size, &read, nullptr);
        bytes.resize(read);
        return bytes;
    }
    // How many bytes went out, -1 when the write failed.
    int Write(const Bytes& bytes) {
        DWORD written = 0;
        return WriteFile(port_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)
                   ? static_cast<int>(written)
                   : -1;
    }
    // A wait on a thread of its own.
    struct Outcome {
        BOOL Result;
        DWORD Events;
    };
    std::future<Outcome> WaitElsewhere() {
        return std::async(std::launch::async, [port = port_] {
            DWORD events = 77;
            const BOOL result = WaitCommEvent(port, &events, nullptr);
            return Outcome{result, events};
        });
    }
    // Ends it by another mask: again and again, since the other thread may not have come to wait yet.
    Outcome EndByMask(std::future<Outcome> wait, DWORD mask) {
        while (!Ready(wait, 5ms)) {
            SetCommMask(port_, mask);
        }
        return wait.get();
    }
    template <class Result>
    static bool Ready(const std::future<Result>& wait, std::chrono::milliseconds time) {
        return wait.wait_for(time) == std::future_status::ready;
    }

    TemporaryTerminal terminal_;
    std::unique_ptr<PseudoTerminal> reader_ = std::make_unique<PseudoTerminal>();
    HANDLE port_;
    BOOL readResult_ = FALSE;
};

double Milliseconds(steady_clock::time_point since) {
    return std::chrono::duration<double, std::milli>(steady_clock::now() - since).count();
}

TEST_F(TtyTest, EveryByteValuePassesBothWays) {
    Bytes all(256);
    std::iota(all.begin(), all.end(), BYTE{0});
    all.insert(all.end(), {0xFF, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0x00, 0x41, 0x0D, 0x0A, 0x03, 0x11, 0x13});
    Timeouts(30);
    reader_->Send(all);
    EXPECT_EQ(Read(), all);
    reader_->Send(Bytes(4096, 0xFF));
    EXPECT_EQ(Read(100), Bytes(100, 0xFF));  // a full buffer ends a read before the gap
    EXPECT_EQ(Read(4096), Bytes(3996, 0xFF));
    EXPECT_EQ(Write(all), static_cast<int>(all.size()));
    EXPECT_EQ(reader_->Receive(all.size()), all);
}

TEST_F(TtyTest, ReadAtOnceTakesWhatIsThere) {
    Timeouts(MAXDWORD);
    EXPECT_TRUE(Read().empty());
    EXPECT_TRUE(readResult_);
    reader_->Send("abcdef");
    DWORD events = 0;
    ASSERT_TRUE(SetCommMask(port_, EV_RXCHAR | EV_BREAK));
    ASSERT_TRUE(WaitCommEvent(port_, &events, nullptr));
    EXPECT_EQ(Read(4), (Bytes{'a', 'b', 'c', 'd'}));
    ASSERT_TRUE(WaitCommEvent(port_, &events, nullptr));  // for the rest
    EXPECT_EQ(events, DWORD{EV_RXCHAR});
    EXPECT_EQ(Read(4), (Bytes{'e', 'f'}));
}

// The gap counts from the last byte. A machine that is busy may tear the burst apart, but not each time.
TEST_F(TtyTest, GapEndsARead) {
    Timeouts(60);
    std::string first, second;
    for (int tries = 0; tries < 10 && (first != "abcdef" || second != "second"); ++tries) {
        PurgeComm(port_, PURGE_RXCLEAR);
        std::thread sender([&] {
            for (const char part : {'a', 'b', 'c', 'd', 'e', 'f'}) {
                reader_->Send(Bytes{static_cast<BYTE>(part)});
                std::this_thread::sleep_for(20ms);
            }
            std::this_thread::sleep_for(200ms);
            reader_->Send("second");
        });
        const Bytes one = Read(), two = Read();
        sender.join();
        first.assign(one.begin(), one.end());
        second.assign(two.begin(), two.end());
    }
    EXPECT_EQ(first, "abcdef");
    EXPECT_EQ(second, "second");
}

TEST_F(TtyTest, WaitIsWokenByBytesAMaskAndTheClose) {
    ASSERT_TRUE(SetCommMask(port_, EV_RXCHAR | EV_BREAK));
    auto wait = WaitElsewhere();
    EXPECT_FALSE(Ready(wait, 50ms));
    reader_->Send("x");
    Outcome outcome = wait.get();
    EXPECT_TRUE(outcome.Result);
    EXPECT_EQ(outcome.Events, DWORD{EV_RXCHAR});
    PurgeComm(port_, PURGE_RXCLEAR);

    wait = WaitElsewhere();
    EXPECT_FALSE(Ready(wait, 50ms));
    outcome = EndByMask(std::move(wait), EV_BREAK);
    EXPECT_TRUE(outcome.Result);
    EXPECT_EQ(outcome.Events, 0u);

    // Bytes are no event now.
    wait = WaitElsewhere();
    reader_->Send(Bytes(6000, 'y'));
    EXPECT_FALSE(Ready(wait, 50ms));
    EXPECT_TRUE(EndByMask(std::move(wait), 0).Result);

    // Without a mask there is nothing to wait for until the port is closed.
    wait = WaitElsewhere();
    EXPECT_FALSE(Ready(wait, 50ms));
    CloseHandle(port_);
    EXPECT_FALSE(wait.get().Result);
    EXPECT_FALSE(SetCommMask(port_, EV_RXCHAR));
    port_ = INVALID_HANDLE_VALUE;
}

TEST_F(TtyTest, CloseAndAbortEndARead) {
    Timeouts(30);
    auto read = std::async(std::launch::async, [&] { return Read(); });
    while (!Ready(read, 10ms)) {
        PurgeComm(port_, PURGE_RXABORT);
    }
    EXPECT_TRUE(read.get().empty());
    EXPECT_FALSE(readResult_);
    read = std::async(std::launch::async, [&] { return Read(); });
    std::this_thread::sleep_for(30ms);
    CloseHandle(port_);
    EXPECT_TRUE(read.get().empty());
    EXPECT_FALSE(readResult_);
    port_ = Open();
    EXPECT_NE(port_, INVALID_HANDLE_VALUE);  // free at once
}

TEST_F(TtyTest, PurgeThrowsAwayWhatHasArrived) {
    Timeouts(MAXDWORD);
    ASSERT_TRUE(SetCommMask(port_, EV_RXCHAR));
    DWORD events = 0;
    reader_->Send("old");
    ASSERT_TRUE(WaitCommEvent(port_, &events, nullptr));
    reader_->Send("older");
    ASSERT_TRUE(PurgeComm(port_, PURGE_TXCLEAR | PURGE_RXCLEAR));
    EXPECT_TRUE(Read().empty());
    reader_->Send("new");
    ASSERT_TRUE(WaitCommEvent(port_, &events, nullptr));
    EXPECT_EQ(Read(), (Bytes{'n', 'e', 'w'}));
    // What has been written is gone from the port: the reader still gets it.
    ASSERT_EQ(Write({'s', 'e', 'n', 't'}), 4);
    PurgeComm(port_, PURGE_TXCLEAR);
    EXPECT_EQ(reader_->Receive(4), (Bytes{'s', 'e', 'n', 't'}));
}

TEST_F(TtyTest, PortIsExclusive) {
    EXPECT_EQ(Open(), INVALID_HANDLE_VALUE);
    reader_->LinkAs(terminal_.Path("COM2"));
    EXPECT_EQ(Open(TEXT("COM2:")), INVALID_HANDLE_VALUE);  // the same device by another link
    for (LPCWSTR name : {TEXT("COM3:"), TEXT("COM1"), TEXT("COM11:"), TEXT("COM/:"), TEXT("../COM1:")})
        EXPECT_EQ(Open(name), INVALID_HANDLE_VALUE);
    CloseHandle(port_);
    port_ = Open(TEXT("com2:"));
    EXPECT_NE(port_, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Open(), INVALID_HANDLE_VALUE);
    CloseHandle(port_);
    port_ = INVALID_HANDLE_VALUE;
    const std::string link = terminal_.Path("COM1");
    for (const char* target : {"/dev/zero", "/etc/passwd", "/nowhere"}) {
        unlink(link.c_str());
        ASSERT_EQ(symlink(target, link.c_str()), 0);
        EXPECT_EQ(Open(), INVALID_HANDLE_VALUE) << target;
    }
}

// Two of them are two lines; what is sent there goes nowhere, however much it is.
TEST_F(TtyTest, NullDeviceIsASilentLine) {
    CloseHandle(port_);
    unlink(terminal_.Path("COM1").c_str());
    for (const char* name : {"COM1", "COM2"})
        ASSERT_EQ(symlink("/dev/null", terminal_.Path(name).c_str()), 0);
    const HANDLE first = Open();
    port_ = Open(TEXT("COM2:"));
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    ASSERT_NE(port_, INVALID_HANDLE_VALUE);
    Timeouts(MAXDWORD, 50);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(Write(Bytes(1000, 'v')), 1000);
        EXPECT_TRUE(Read().empty());
        EXPECT_TRUE(readResult_);
        PurgeComm(port_, PURGE_TXCLEAR | PURGE_RXCLEAR);
    }
    EXPECT_TRUE(CloseHandle(first));
}

TEST_F(TtyTest, LineStateReachesTheDevice) {
    const struct {
        DWORD Rate;
        BYTE Size;
        unsigned Code;  // 0: refused, and the line stays as it was
    } states[] = {{9600, 8, B9600},     {38400, 8, B38400}, {57600, 8, B57600},
                  {115200, 8, B115200}, {12345, 8, 0},      {115200, 7, 0}};
    DCB state{};
    for (const auto& [rate, size, code] : states) {
        ASSERT_TRUE(GetCommState(port_, &state));
        state.BaudRate = rate;
        state.ByteSize = size;
        EXPECT_EQ(SetCommState(port_, &state), code != 0 ? TRUE : FALSE);
        EXPECT_EQ(reader_->SpeedCode(), code != 0 ? code : unsigned{B115200});
    }
    ASSERT_TRUE(GetCommState(port_, &state));
    EXPECT_EQ(state.BaudRate, 115200u);
    // No modem lines, no break here: raising RTS is no error, a break is refused.
    state.fRtsControl = RTS_CONTROL_ENABLE;
    EXPECT_TRUE(SetCommState(port_, &state));
    EXPECT_FALSE(SetCommBreak(port_));
    EXPECT_FALSE(ClearCommBreak(port_));
}

TEST_F(TtyTest, WriteTimeoutCountsFromWhatTheLineNeeds) {
    SetRate(115200);
    Timeouts(MAXDWORD, 10);
    // Nobody reads: the terminal fills up, then the time-out ends the write.
    const Bytes big(20000, 'w');
    const auto start = steady_clock::now();
    const int written = Write(big);
    EXPECT_GT(written, 0);
    EXPECT_LT(written, static_cast<int>(big.size()));
    EXPECT_GE(Milliseconds(start), 20000 * 10 * 1000 / 115200);
    EXPECT_LT(Milliseconds(start), 5000);
}

double ProcessorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_nsec) / 1e6;
}

TEST_F(TtyTest, ReaderThatGoesAndComesBackIsUsedAgain) {
    Timeouts(30, 200);
    SetRate(57600);
    ASSERT_TRUE(SetCommMask(port_, EV_RXCHAR | EV_BREAK));
    reader_->Send("last words");
    auto wait = WaitElsewhere();
    EXPECT_TRUE(wait.get().Result);
    reader_->CloseMaster();
    EXPECT_EQ(Read().size(), 10u);

    // Waits fail, but do not keep the processor busy.
    const auto start = steady_clock::now();
    const double busy = ProcessorTime();
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(WaitElsewhere().get().Result);
    EXPECT_GE(Milliseconds(start), 300);
    EXPECT_LT(ProcessorTime() - busy, 100);
    EXPECT_EQ(Write({'x'}), -1);
    EXPECT_TRUE(Read().empty());
    EXPECT_FALSE(readResult_);

    wait = WaitElsewhere();
    reader_ = std::make_unique<PseudoTerminal>();
    reader_->LinkAs(terminal_.Path("COM1"));
    // A wait that ended before the link was there is begun anew.
    while (reader_->SpeedCode() != unsigned{B57600}) {
        if (Ready(wait, 5ms)) {
            wait = WaitElsewhere();
        }
    }
    reader_->Send("back");
    EXPECT_TRUE(wait.get().Result);
    EXPECT_EQ(Read(), (Bytes{'b', 'a', 'c', 'k'}));
    EXPECT_EQ(Write({'x'}), 1);
    EXPECT_EQ(reader_->Receive(1), Bytes{'x'});

    // Gone again: who gets its name now, one of these on a machine that makes others meanwhile, is a
    // stranger.
    reader_->CloseMaster();
    EXPECT_FALSE(WaitElsewhere().get().Result);
    const PseudoTerminal strangers[4];
    EXPECT_EQ(Write({'x'}), -1);
}

TEST_F(TtyTest, MaskAndCloseEndAWaitOnAnUnpluggedPort) {
    ASSERT_TRUE(SetCommMask(port_, EV_RXCHAR));
    reader_->CloseMaster();
    BOOL woken = FALSE;
    for (int tries = 0; tries < 20 && !woken; ++tries) {
        woken = EndByMask(WaitElsewhere(), EV_BREAK).Result;
    }
    EXPECT_TRUE(woken);
    auto wait = WaitElsewhere();
    CloseHandle(port_);
    EXPECT_FALSE(wait.get().Result);
    port_ = INVALID_HANDLE_VALUE;
}

// Two threads write frames at once; none may be cut by another.
TEST_F(TtyTest, FramesOfTwoThreadsStayWhole) {
    Timeouts(MAXDWORD, 200);
    constexpr std::size_t Size = 257, Count = 200;
    auto writer = [&](BYTE value) {
        const Bytes frame(Size, value);
        for (std::size_t i = 0; i < Count; ++i) {
            Write(frame);
        }
    };
    std::thread one(writer, BYTE{1}), two(writer, BYTE{2});
    const Bytes all = reader_->Receive(2 * Size * Count);
    one.join();
    two.join();
    ASSERT_EQ(all.size(), 2 * Size * Count);
    for (std::size_t i = 0; i < all.size(); i += Size)
        ASSERT_EQ(std::count(all.begin() + i, all.begin() + i + Size, all[i]), static_cast<long>(Size));
}

// Breaks, which no pseudo-terminal has, and what the line marks; whole and byte by byte.
TEST(ReceiveQueue, BreaksDoubledAndDamagedBytes) {
    const struct {
        Bytes In, Out;
        int Breaks;
    } cases[] = {
        {{0x41, 0xFF, 0xFF, 0x42}, {0x41, 0xFF, 0x42}, 0},
        {{0xFF, 0xFF, 0xFF, 0xFF, 0x00}, {0xFF, 0xFF, 0x00}, 0},
        {{0xFF, 0xFF, 0x00, 0x00}, {0xFF, 0x00, 0x00}, 0},
        {{0xFF, 0x00, 0x00}, {}, 1},
        {{0x41, 0xFF, 0x00, 0x00, 0x42, 0xFF, 0x00, 0x00}, {0x41, 0x42}, 2},
        {{0xFF, 0x00, 0x55, 0x00}, {0x55, 0x00}, 0},
        {{0xFF, 0x41}, {0xFF, 0x41}, 0},
    };
    for (const auto& test : cases) {
        layer::ReceiveQueue whole, cut;
        int breaks = 0;
        whole.Add(test.In, nullptr);
        for (const BYTE byte : test.In) {
            cut.Add({&byte, 1}, nullptr);
            breaks += std::exchange(cut.Broke, false);
        }
        EXPECT_EQ(whole.Broke, test.Breaks > 0);
        EXPECT_EQ(breaks, test.Breaks);
        for (layer::ReceiveQueue* queue : {&whole, &cut}) {
            Bytes out(10);
            out.resize(queue->Take(out.data(), 10));
            EXPECT_EQ(out, test.Out);
        }
    }
}

}  // namespace
