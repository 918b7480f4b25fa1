// The small programs beside a window as the program's: the trigger key from input devices (pipes with the
// kernel's events, and a device of the kernel's where one can be made), the scan watcher and its status.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <libevdev/libevdev-uinput.h>
#include <linux/input.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/window.h"
#include "shell/status.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_terminal.h"

namespace {

using namespace std::chrono_literals;

std::string Received;
UINT Messages[4], QueryStatus;
DWORD Flags;  // of the status; every other value of it is 1

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == QueryStatus)
        return wParam == static_cast<WPARAM>(StatusValue::Flags) ? static_cast<LRESULT>(Flags) : 1;
    constexpr const char* Names[] = {"down1 ", "up1 ", "down2 ", "up2 "};
    for (int i = 0; i < 4; ++i) {
        if (message == Messages[i])
            Received += Names[i];
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

class TriggerDevice : public testing::Test {
  protected:
    TriggerDevice() {
        layer::StartWindows();
        layer::StopListening();  // in the terminal of the test before
        layer::ForgetRegisteredMessages();
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = Procedure;
        windowClass.lpszClassName = TEXT("Vantrel");
        RegisterClassW(&windowClass);
        constexpr LPCWSTR Names[] = {TEXT("WM_USER1DOWN"), TEXT("WM_USER1UP"), TEXT("WM_USER2DOWN"),
                                     TEXT("WM_USER2UP")};
        for (int i = 0; i < 4; ++i)
            Messages[i] = RegisterWindowMessageW(Names[i]);
        QueryStatus = RegisterWindowMessageW(QueryStatusMessage);
        window_ = CreateWindowExW(0, TEXT("Vantrel"), TEXT("Vantrel v1.29"), 0, 0, 0, 9, 9, nullptr, nullptr,
                                  nullptr, nullptr);
        Received.clear();
    }
    ~TriggerDevice() override { DestroyWindow(window_); }

    void Watch(std::vector<std::string> words) {
        words.insert(words.begin(), VANTREL_PROGRAMS "/vantrel-trigger");
        program_ = std::make_unique<ChildProcess>(words);
    }
    // What has come when nothing more comes for a while.
    static std::string Sent(std::size_t length) {
        Pump(5s, [=] { return Received.size() >= length; });
        Pump(100ms);
        return std::exchange(Received, "");
    }
    // Serves the windows for this time, or until it is so.
    static void Pump(
        std::chrono::milliseconds time, const std::function<bool()>& so = [] { return false; }) {
        const auto until = std::chrono::steady_clock::now() + time;
        while (!so() && std::chrono::steady_clock::now() < until) {
            layer::PumpMessages();
            std::this_thread::sleep_for(1ms);
        }
    }

    TemporaryTerminal terminal_;
    std::unique_ptr<ChildProcess> program_;
    HWND window_ = nullptr;
};

// A pipe that stands for a device. It is there once somebody watches it.
class Pedal {
  public:
    explicit Pedal(const std::string& path) : path_(path) { mkfifo(path.c_str(), 0600); }
    ~Pedal() { Unplug(); }
    void Plug() {
        for (int tries = 0; tries < 500 && file_ < 0; ++tries, std::this_thread::sleep_for(10ms))
            file_ = open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(file_, 0);
    }
    void Unplug() {
        close(file_);
        file_ = -1;
    }
    void Send(std::initializer_list<std::pair<int, int>> keys) {
        for (const auto& [code, value] : keys) {
            input_event events[2]{};
            events[0].type = EV_KEY;
            events[0].code = static_cast<__u16>(code);
            events[0].value = value;
            ASSERT_EQ(write(file_, events, sizeof events), static_cast<ssize_t>(sizeof events));
        }
    }
    void SendGap() {
        input_event events[3]{};
        events[0].code = SYN_DROPPED;
        events[1].type = EV_KEY;  // the rest of a report that was cut
        events[1].code = KEY_F9;
        ASSERT_EQ(write(file_, events, sizeof events), static_cast<ssize_t>(sizeof events));
    }

  private:
    std::string path_;
    int file_ = -1;
};

TEST_F(TriggerDevice, KeysOfSeveralDevices) {
    Pedal left(terminal_.Path("left")), right(terminal_.Path("right"));
    Watch({"--device", terminal_.Path("left"), "--device", terminal_.Path("right"), "--key", "KEY_F9",
           "--key", "KEY_F10=2"});
    left.Plug();
    right.Plug();
    left.Send({{KEY_A, 1}, {KEY_F9, 1}, {KEY_F9, 2}, {KEY_F9, 2}, {KEY_A, 0}});
    EXPECT_EQ(Sent(6), "down1 ");
    left.SendGap();  // what was lost cannot be asked for here: the key stays as it was
    right.Send({{KEY_F9, 1}});
    EXPECT_EQ(Sent(0), "");
    left.Send({{KEY_F9, 0}});
    EXPECT_EQ(Sent(0), "");
    right.Send({{KEY_F10, 1}, {KEY_F9, 0}, {KEY_F10, 0}});
    EXPECT_EQ(Sent(14), "down2 up1 up2 ");
    left.Send({{KEY_F9, 0}, {KEY_F9, 1}, {KEY_F9, 0}, {KEY_F9, 1}, {KEY_F9, 0}});
    EXPECT_EQ(Sent(20), "down1 up1 down1 up1 ");
}

TEST_F(TriggerDevice, KeyComesUpWithItsDeviceAndWithTheProgram) {
    Pedal pedal(terminal_.Path("pedal"));
    Watch({"--device", terminal_.Path("pedal"), "--key", "BTN_TRIGGER"});
    for (int i = 0; i < 2; ++i) {
        pedal.Plug();
        pedal.Send({{BTN_TRIGGER, 1}});
        EXPECT_EQ(Sent(6), "down1 ");
        if (i == 0) {
            pedal.Unplug();
            EXPECT_EQ(Sent(4), "up1 ");
        }
    }
    program_->Signal(SIGTERM);
    EXPECT_EQ(Sent(4), "up1 ");
    EXPECT_EQ(program_->Wait(), 0);
}

TEST_F(TriggerDevice, AProgramThatHungOverThePressGetsTheRelease) {
    Pedal pedal(terminal_.Path("pedal"));
    Watch({"--device", terminal_.Path("pedal"), "--key", "BTN_TRIGGER"});
    pedal.Plug();
    pedal.Send({{BTN_TRIGGER, 1}, {BTN_TRIGGER, 0}});
    std::this_thread::sleep_for(5500ms);  // longer than a message waits for its answer
    EXPECT_EQ(Sent(10), "down1 up1 ");
}

TEST_F(TriggerDevice, CommandLines) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"--device", "x"},
             {"--key", "KEY_F9"},
             {"--device", "x", "--key", "KEY_NONE_SUCH"},
             {"--device", "x", "--key", "KEY_F9=3"},
             {"--device", "x", "--key", "KEY_F9", "down"},
             {"--list", "down"},
         }) {
        Watch(words);
        EXPECT_EQ(program_->Wait(), 2) << words.back();
    }
}

TEST_F(TriggerDevice, KernelDevice) {
    libevdev* model = libevdev_new();
    libevdev_set_name(model, "Vantrel test pedal");
    libevdev_enable_event_code(model, EV_KEY, KEY_F13, nullptr);
    libevdev_uinput* device = nullptr;
    const int made = libevdev_uinput_create_from_device(model, LIBEVDEV_UINPUT_OPEN_MANAGED, &device);
    libevdev_free(model);
    if (made != 0)
        GTEST_SKIP() << "no /dev/uinput";
    const auto key = [&](int value) {
        libevdev_uinput_write_event(device, EV_KEY, KEY_F13, value);
        libevdev_uinput_write_event(device, EV_SYN, SYN_REPORT, 0);
    };
    key(1);  // held while it is found: counts from its next press
    std::this_thread::sleep_for(300ms);
    Watch({"--device", libevdev_uinput_get_devnode(device), "--key", "KEY_F13", "--grab"});
    Pump(1s);
    for (const int value : {0, 1, 0})
        key(value);
    EXPECT_EQ(Sent(10), "down1 up1 ");
    key(1);
    EXPECT_EQ(Sent(6), "down1 ");
    libevdev_uinput_destroy(device);
    EXPECT_EQ(Sent(4), "up1 ");
}

TEST_F(TriggerDevice, TheProgramIsReadyOnceNothingStandsAgainstIt) {
    for (const auto& [flags, ready] : {std::pair<DWORD, bool>{0, false},
                                       {StatusInitialized, true},
                                       {StatusInitialized | StatusApplying, false},
                                       {StatusInitialized | StatusError, false},
                                       {StatusInitialized | StatusBarcodeReading, true}}) {
        Flags = flags;
        ChildProcess watch({VANTREL_PROGRAMS "/vantrel-watch", "--status"});
        std::optional<std::string> line;
        Pump(25s, [&] { return (line = watch.ReadLine(1)).has_value(); });
        EXPECT_NE(line.value_or("").find(ready ? "\"ready\":true" : "\"ready\":false"), std::string::npos)
            << flags << " " << line.value_or("");
    }
}

// With scans for longer than it waits for one it stays; what is no scan is passed over. A scan that finds no
// room on its disk is not passed over.
TEST_F(TriggerDevice, AWatcherGivesUpOnlyWhenNoScanComes) {
    constexpr int Scans = 70;
    ChildProcess full(
        {"/bin/sh", "-c", "exec \"$0\" --messages > /dev/full", VANTREL_PROGRAMS "/vantrel-watch"});
    Pump(10s, [] { return layer::ListPrograms().size() >= 2; });
    ChildProcess watch({VANTREL_PROGRAMS "/vantrel-watch", "--messages", "--timeout", "5", "--count",
                        std::to_string(Scans)});
    Pump(10s, [] { return layer::ListPrograms().size() >= 3; });
    const UINT decode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    BYTE byte = 0;
    COPYDATASTRUCT other{12, 1, &byte}, scan{decode, 1, &byte};
    SendMessageW(HWND_BROADCAST, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&other));
    SendMessageW(HWND_BROADCAST, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&scan));
    for (int i = 0; i < Scans; ++i) {
        SendMessageW(HWND_BROADCAST, decode, 7, 0);
        std::this_thread::sleep_for(100ms);
    }
    EXPECT_EQ(watch.ReadLine(), R"({"channel":"copydata","error":"a record of 1 bytes"})");
    EXPECT_EQ(watch.ReadLine(), R"({"channel":"decode","source":7})");
    EXPECT_EQ(watch.Wait(), 0);
    EXPECT_EQ(full.Wait(), 1) << "it has gone on without a word";
}

}  // namespace
