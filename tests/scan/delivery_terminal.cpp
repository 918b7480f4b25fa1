#include "tests/scan/delivery_terminal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <thread>

#include "platform/kernel.h"
#include "platform/keyboard.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/start_windows.h"
#include "scan/typing.h"
#include "settings/defaults.h"
#include "settings/general_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD RecordSize = 4232;

DeliveryTerminal* Current = nullptr;

// What a key types; that it does so on a US keyboard is shown by the end-to-end tests.
char CharacterOf(BYTE key, bool shift) {
    for (int byte = 1; byte < 256; ++byte) {
        const KeyStroke stroke = KeyForByte(static_cast<BYTE>(byte));
        if (stroke.Key == key && stroke.Shift == shift) {
            return static_cast<char>(byte);
        }
    }
    return key == VK_TAB ? '\t' : '\x01';
}

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
        Current->Messages.push_back("copydata");
        return TRUE;
    }
    if (message == ShellState.MsgDecode) {
        Current->Messages.push_back("decode " + std::to_string(wParam));
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

void KeyLog::Key(BYTE key, bool up) {
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
            EXPECT_TRUE(event.Key != VK_SHIFT || down.empty()) << "Shift goes before its key";
            continue;
        }
        EXPECT_TRUE(down.insert(event.Key).second) << "pressed twice: " << int{event.Key};
        if (event.Key != VK_SHIFT) {
            text += CharacterOf(event.Key, down.contains(VK_SHIFT));
        }
    }
    EXPECT_TRUE(down.empty()) << "left down";
    return text;
}

DeliveryTerminal::DeliveryTerminal(WORD devices, layer::Clock* clock) {
    layer::StartWindows();
    layer::InstallClock(clock);
    auto keyboard = std::make_unique<KeyLog>();
    Keys = keyboard.get();
    layer::InstallKeyboard(std::move(keyboard));
    DeviceFlags = devices;
    for (Relaxed<WORD>& word : GeneralSettings) {
        word = 0;
    }
    ResetSettings(ResetAllGroups);
    SetValue(general::AutoEnter, '0');
    SetValue(general::GoodReadBeep, '0');
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
    ShellState.MainWindow =
        CreateWindowExW(0, WindowClassName, WindowTitle, 0, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(ShellState.MainWindow, nullptr);
    EXPECT_NE(ShellState.QueueReader, nullptr);
    EXPECT_NE(ShellState.DecodeEventHandle, nullptr);
}

DeliveryTerminal::~DeliveryTerminal() {
    DestroyWindow(ShellState.MainWindow.Exchange(nullptr));
    layer::PumpMessages();
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
    Current = nullptr;
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
