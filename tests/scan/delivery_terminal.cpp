#include "tests/scan/delivery_terminal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <set>
#include <thread>

#include "platform/kernel.h"
#include "platform/linux/keyboard/keyboard_backend.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/start_windows.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/scan/us_keyboard.h"

namespace {

constexpr DWORD RecordSize = 4232;

DeliveryTerminal* Current = nullptr;

class LoggedKeyboard : public layer::KeyboardBackend {
  public:
    explicit LoggedKeyboard(KeyLog& log) : log_(log) {}
    void Key(BYTE key, bool up) override { log_.Add(key, up); }
    void ReleaseAll() override {}

  private:
    KeyLog& log_;
};

HANDLE QueueEnd(BOOL reads) {
    MSGQUEUEOPTIONS options{};
    options.dwSize = sizeof options;
    options.dwMaxMessages = 1;
    options.cbMaxMessage = RecordSize;
    options.bReadAccess = reads;
    return CreateMsgQueue(TEXT("QuenraDataQueue"), &options);
}

LRESULT CALLBACK LoggingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COPYDATA) {
        const auto& copy = *reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        EXPECT_EQ(copy.dwData, ShellState.MsgDecode);
        Current->CopiedRecord.assign(static_cast<const char*>(copy.lpData), copy.cbData);
        Current->KeysBeforeCopy = Current->Keys->Events().size();
        Current->Messages.push_back("copydata");
        return TRUE;
    }
    if (message == ShellState.MsgDecode) {
        Current->Messages.push_back("decode " + std::to_string(wParam));
        return 0;
    }
    if (message == WM_TIMER) {
        KillTimer(window, wParam);
        Current->Messages.push_back("timer " + std::to_string(wParam));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void ResetSettings(WORD devices) {
    DeviceFlags = devices;
    for (auto& word : SymbologySettings) {
        word = 0;
    }
    for (auto& word : GeneralSettings) {
        word = 0;
    }
    for (const Setting* setting :
         {&general::AutoEnter, &general::AutoEnterCharacter, &general::IncludeCodeType,
          &general::IncludeCodeLength, &general::EnableVibrator, &general::GoodReadBeep,
          &general::ReadRfidUid, &general::ReadRfidData, &general::UseDelimiter, &decoder1d::Ean128Enabled,
          &decoder1d::Ean128TransmitCodeId}) {
        SetValue(*setting, '0');
    }
    SetValue(general::DataOutput, '1');
}

}  // namespace

void KeyLog::Add(BYTE key, bool up) {
    const std::uint64_t now = layer::CurrentClock().Now();
    const std::scoped_lock lock(mutex_);
    if (events_.empty()) {
        events_.reserve(1 << 16);
    }
    events_.push_back({key, up, now});
}

std::vector<KeyEvent> KeyLog::Events() const {
    const std::scoped_lock lock(mutex_);
    return events_;
}

void KeyLog::Clear() {
    const std::scoped_lock lock(mutex_);
    events_.clear();
}

std::string KeyLog::Text() const {
    std::string text;
    std::set<BYTE> down;
    for (const KeyEvent& event : Events()) {
        if (event.Up) {
            EXPECT_EQ(down.erase(event.Key), 1u) << "released unpressed: " << int{event.Key};
            continue;
        }
        EXPECT_TRUE(down.insert(event.Key).second) << "pressed twice: " << int{event.Key};
        if (event.Key != VK_SHIFT) {
            const auto found = UsKeyboard().find({event.Key, down.count(VK_SHIFT) != 0});
            text += found != UsKeyboard().end() ? found->second : '\x01';
        }
    }
    EXPECT_TRUE(down.empty()) << "left down";
    return text;
}

DeliveryTerminal::DeliveryTerminal(WORD devices, layer::Clock* clock) : Keys(new KeyLog) {
    layer::StartWindows();
    layer::InstallClock(clock);
    layer::InstallKeyboard(std::make_unique<LoggedKeyboard>(*Keys));
    ResetSettings(devices);
    ShellState.MsgDecode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    ShellState.DecodeEventHandle = CreateEventW(nullptr, FALSE, FALSE, TEXT("DecodeEvent"));
    ShellState.QueueWriter = QueueEnd(FALSE);
    ShellState.QueueReader = QueueEnd(TRUE);
    ShellState.VibratorSemaphore = CreateSemaphoreW(nullptr, 0, 1, nullptr);
    ShellState.TriggerReleased = 1;
    ShellState.TransferBusy = 0;
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = LoggingProc;
    windowClass.lpszClassName = WindowClassName;
    RegisterClassW(&windowClass);
    Current = this;
    window_ =
        CreateWindowExW(0, WindowClassName, WindowTitle, 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ShellState.MainWindow = window_;
    EXPECT_NE(window_, nullptr);
    EXPECT_NE(ShellState.QueueReader, nullptr);
    EXPECT_NE(ShellState.DecodeEventHandle, nullptr);
}

DeliveryTerminal::~DeliveryTerminal() {
    DestroyWindow(window_);
    layer::PumpMessages();
    ShellState.MainWindow = nullptr;
    // The next test has another folder, and its own socket in it.
    layer::StopListening();
    for (Relaxed<HANDLE>* end : {&ShellState.QueueWriter, &ShellState.QueueReader}) {
        if (const HANDLE handle = end->Exchange(nullptr)) {
            CloseMsgQueue(handle);
        }
    }
    CloseHandle(ShellState.DecodeEventHandle.Exchange(nullptr));
    CloseHandle(ShellState.VibratorSemaphore.Exchange(nullptr));
    layer::InstallKeyboard(nullptr);
    layer::InstallClock(nullptr);
    delete Keys;
    Current = nullptr;
}

void DeliveryTerminal::OnReceiveThread(const std::function<void()>& work) {
    OnReceiveThreads({work});
}

void DeliveryTerminal::OnReceiveThreads(const std::vector<std::function<void()>>& works) {
    std::atomic<std::size_t> running = works.size();
    std::vector<std::thread> threads;
    for (const auto& work : works) {
        threads.emplace_back([&running, &work] {
            work();
            --running;
        });
    }
    while (running != 0) {
        layer::PumpMessages();
        std::this_thread::yield();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    layer::PumpMessages();
}

std::string DeliveryTerminal::TakeRecord() {
    std::string record(RecordSize, '\xAA');
    DWORD read = 0;
    DWORD flags = 0;
    if (!ReadMsgQueue(ShellState.QueueReader, record.data(), RecordSize, &read, 0, &flags)) {
        return {};
    }
    record.resize(read);
    return record;
}

bool DeliveryTerminal::TakeEvent() {
    return WaitForSingleObject(ShellState.DecodeEventHandle, 0) == WAIT_OBJECT_0;
}

ScanData BarcodeScan(char codeType, const std::string& data) {
    ScanData scan{};
    scan.codeType = static_cast<BYTE>(codeType);
    scan.length = static_cast<DWORD>(data.size());
    std::memcpy(scan.data, data.data(), data.size());
    return scan;
}

std::string BarcodeRecord(char codeType, const std::string& data) {
    std::string record(RecordSize, '\0');
    record[0] = 7;
    record[1] = codeType;
    record[8] = static_cast<char>(data.size() & 0xFF);
    record[9] = static_cast<char>(data.size() >> 8);
    record.replace(133, data.size(), data);
    return record;
}
