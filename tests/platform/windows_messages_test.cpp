// The message loop: timers, carried calls, quitting, windows that go while they are being told something.
#include <atomic>
#include <thread>

#include "platform/linux/windows/message_loop.h"
#include "tests/platform/window_fixture.h"
#include "tests/support/manual_clock.h"

namespace {

class MessagesTest : public WindowTest {
  protected:
    MessagesTest() {
        layer::InstallClock(&clock_);
        clock_.AddSource(layer::WindowTimers());
    }
    ~MessagesTest() override {
        clock_.RemoveSource(layer::WindowTimers());
        layer::InstallClock(nullptr);
    }
    // Notes the ids of timers and the wParam of private messages, in order.
    void NoteEvents() {
        Handle = [this](HWND, UINT message, WPARAM wParam, LPARAM) -> LRESULT {
            if (message == WM_TIMER || message >= WM_USER) {
                seen_.push_back(wParam);
            }
            return 0;
        };
    }
    std::vector<WPARAM> Advance(std::uint64_t milliseconds) {
        seen_.clear();
        clock_.Advance(milliseconds);
        layer::PumpMessages();
        return seen_;
    }

    // Until WM_QUIT, which it returns.
    static MSG RunMessages() {
        MSG message{};
        while (GetMessageW(&message, nullptr, 0, 0) != FALSE) {
            DispatchMessageW(&message);
        }
        return message;
    }

    layer::ManualClock clock_;
    std::vector<WPARAM> seen_;
};

using Ids = std::vector<WPARAM>;

TEST_F(MessagesTest, TimersFireWhenDue) {
    NoteEvents();
    SetTimer(window_, 1, 100, nullptr);
    SetTimer(window_, 2, 30, nullptr);
    EXPECT_EQ(Advance(29), Ids{});
    EXPECT_EQ(Advance(1), Ids{2});
    EXPECT_EQ(Advance(70), (Ids{2, 1})) << "the one due first comes first, and once however late";
    EXPECT_TRUE(KillTimer(window_, 2));
    EXPECT_FALSE(KillTimer(window_, 2));
    EXPECT_EQ(Advance(100), Ids{1});
    SetTimer(window_, 1, 100, nullptr);
    EXPECT_EQ(Advance(60), Ids{});
    SetTimer(window_, 1, 100, nullptr);
    EXPECT_EQ(Advance(60), Ids{}) << "set again, it starts anew";
    EXPECT_EQ(Advance(40), Ids{1});
    SetTimer(window_, 3, 0, nullptr);
    EXPECT_EQ(Advance(9), Ids{}) << "the platform's shortest period is 10 ms";
    EXPECT_EQ(Advance(1), Ids{3});
}

TEST_F(MessagesTest, PostedMessagesComeBeforeTimersAndQuittingAfterThem) {
    NoteEvents();
    SetTimer(window_, 1, 10, nullptr);
    clock_.Advance(50);
    PostQuitMessage(5);
    PostMessageW(window_, WM_USER, 100, 0);
    PostMessageW(window_, WM_USER, 101, 0);
    const MSG message = RunMessages();
    EXPECT_EQ(seen_, (Ids{100, 101}));
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 5u);
}

TEST_F(MessagesTest, ATimerSetByAThreadWakesTheLoop) {
    layer::InstallClock(nullptr);
    Handle = [](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        if (message == WM_TIMER) {
            PostQuitMessage(0);
        }
        return 0;
    };
    std::thread other([&] { SetTimer(window_, 9, 20, nullptr); });
    RunMessages();
    other.join();
    layer::InstallClock(&clock_);
}

// A sent message of a thread that arrives while a handler waits in a loop of its own is handled there.
TEST_F(MessagesTest, CarriedCallsRunInsideNestedLoops) {
    std::vector<WPARAM> handled;
    std::thread second;
    Handle = [&](HWND, UINT message, WPARAM wParam, LPARAM) -> LRESULT {
        if (message == WM_USER) {
            handled.push_back(wParam);
            if (wParam == 1) {
                second = std::thread([&] { SendMessageW(window_, WM_USER, 2, 0); });
                layer::RunModalLoop([&] { return handled.size() == 2; });
                handled.push_back(3);
            }
        }
        return 0;
    };
    std::thread first([&] {
        SendMessageW(window_, WM_USER, 1, 0);
        PostQuitMessage(0);
    });
    RunMessages();
    first.join();
    second.join();
    EXPECT_EQ(handled, (Ids{1, 2, 3}));
}

TEST_F(MessagesTest, QuittingEndsEveryNestedLoop) {
    layer::InstallClock(nullptr);
    std::atomic<int> threadsBox{-1};
    std::thread other;
    bool inner = false;
    Then([&] {
        Then([&] {
            other = std::thread([&] { threadsBox = MessageBoxW(nullptr, TEXT("2"), TEXT("box"), MB_OK); });
            PostQuitMessage(3);
        });
        layer::RunModalLoop([] { return false; });
        inner = true;
    });
    EXPECT_EQ(MessageBoxW(window_, TEXT("1"), TEXT("box"), MB_OK), 0);
    EXPECT_TRUE(inner);
    EXPECT_EQ(RunMessages().wParam, 3u);
    // The box of the other thread may come up only now: it must not stay.
    PostQuitMessage(3);
    for (int i = 0; i < 500 && threadsBox < 0; ++i) {
        layer::PumpMessages();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    other.join();
    EXPECT_EQ(threadsBox, 0);
}

TEST_F(MessagesTest, AWindowIsGoneForItsCallersOnceItIsDestroyed) {
    Handle = [](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
        if (message == WM_USER) {
            DestroyWindow(window);
            EXPECT_FALSE(IsWindow(window));
            EXPECT_EQ(SendMessageW(window, WM_USER, 0, 0), 0);
            EXPECT_EQ(SetTimer(window, 1, 10, nullptr), 0u);
            return 8;
        }
        if (message == WM_DESTROY) {
            DestroyWindow(window);  // once is enough
        }
        return 0;
    };
    EXPECT_EQ(SendMessageW(window_, WM_USER, 0, 0), 8);
    EXPECT_FALSE(PostMessageW(window_, WM_USER, 0, 0));
}

TEST_F(MessagesTest, ADestroyedWindowTakesTheWindowsItOwnsAlong) {
    const HWND owned = CreateWindowExW(0, TestWindowClass, TEXT("owned"), 0, 0, 0, 20, 20, window_, nullptr,
                                       nullptr, nullptr);
    std::vector<HWND> destroyed;
    Handle = [&](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
        if (message == WM_DESTROY) {
            EXPECT_TRUE(IsWindow(window));
            destroyed.push_back(window);
        }
        return 0;
    };
    DestroyWindow(window_);
    EXPECT_EQ(destroyed, (std::vector{window_, owned}));
    EXPECT_FALSE(IsWindow(owned));
}

// The main window is shown without taking the focus, so that a start in the background stays there.
TEST_F(MessagesTest, AWindowIsInFrontOnlyOnceItIsBroughtThere) {
    const std::pair<std::function<void()>, HWND> steps[] = {
        {[this] { ShowWindow(window_, SW_SHOWNORMAL); }, nullptr},
        {[this] { SetWindowPos(window_, HWND_TOP, 1, 2, 30, 40, SWP_NOACTIVATE | SWP_SHOWWINDOW); }, nullptr},
        {[this] { SetWindowPos(window_, nullptr, 0, 0, 50, 60, SWP_NOMOVE | SWP_NOZORDER); }, window_},
        {[this] { ShowWindow(window_, SW_HIDE); }, nullptr},
        {[this] { ShowWindow(window_, SW_SHOWNORMAL); }, nullptr}};
    for (const auto& [step, front] : steps) {
        step();
        layer::PumpMessages();
        EXPECT_EQ(GetForegroundWindow(), front);
    }
}

}  // namespace
