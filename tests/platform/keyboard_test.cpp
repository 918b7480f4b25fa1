// Turns and the trace of synthetic keys; no X server.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "platform/kernel.h"
#include "platform/keyboard.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "tests/support/manual_clock.h"
#include "tests/support/temporary_terminal.h"

namespace {

struct Events {
    std::vector<std::pair<BYTE, bool>> List;
    int Released = 0;
};

class RecordingKeyboard : public layer::KeyboardBackend {
  public:
    explicit RecordingKeyboard(Events& events) : events_(events) {}
    void Key(BYTE key, bool up) override { events_.List.push_back({key, up}); }
    void ReleaseAll() override { ++events_.Released; }

  private:
    Events& events_;
};

class Keyboard : public testing::Test {
  protected:
    Keyboard() { layer::InstallKeyboard(std::make_unique<RecordingKeyboard>(events_)); }
    ~Keyboard() override { layer::InstallKeyboard(nullptr); }
    Events events_;
};

void Down(BYTE key) {
    keybd_event(key, 0, 0, 0);
}
void Up(BYTE key) {
    keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
}

TEST_F(Keyboard, StrokesOfTwoThreadsDoNotInterleave) {
    constexpr int Count = 500;
    auto typist = [](BYTE key) {
        for (int i = 0; i < Count; ++i) {
            Down(VK_SHIFT);
            Down(key);
            Up(key);
            Up(VK_SHIFT);
        }
    };
    // Both have to wait first.
    Down(VK_TAB);
    std::thread one(typist, BYTE{'A'}), two(typist, BYTE{'B'});
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    Up(VK_TAB);
    one.join();
    two.join();
    ASSERT_EQ(events_.List.size(), 8u * Count + 2);
    for (std::size_t i = 2; i < events_.List.size(); i += 4) {
        EXPECT_EQ(events_.List[i], (std::pair<BYTE, bool>{VK_SHIFT, false}));
        EXPECT_EQ(events_.List[i + 1].first, events_.List[i + 2].first);
        EXPECT_EQ(events_.List[i + 3], (std::pair<BYTE, bool>{VK_SHIFT, true}));
    }
}

TEST_F(Keyboard, ThreadThatEndsWithAKeyDownLetsGo) {
    std::thread([] {
        Down(VK_SHIFT);
        Down('A');
    }).join();
    EXPECT_EQ(events_.Released, 1);
    Down('B');  // and nobody waits for it
    Up('B');
    EXPECT_EQ(events_.List.back(), (std::pair<BYTE, bool>{'B', true}));
}

TEST(KeyTrace, OneLineForEachEvent) {
    TemporaryTerminal terminal;
    const std::string file = terminal.Path("keys");
    WriteWholeFile(file, "before\n");
    setenv("VANTREL_KEYBOARD", ("trace:" + file).c_str(), 1);
    layer::InstallKeyboard(nullptr);
    layer::ManualClock clock;
    layer::InstallClock(&clock);
    Down(VK_SHIFT);
    Down('A');
    Sleep(5);
    Up('A');
    Up(VK_SHIFT);
    Down(VK_OEM_7);
    layer::RunEndWork();
    Up(VK_OEM_7);
    EXPECT_EQ(
        ReadWholeFile(file),
        "before\n1000 10 down\n1000 41 down\n1005 41 up\n1005 10 up\n1005 DE down\n1005 DE up\n1005 DE up\n");
    layer::InstallClock(nullptr);
    layer::InstallKeyboard(nullptr);
    unsetenv("VANTREL_KEYBOARD");
}

}  // namespace
