#include "scan/delivery.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>

#include "link/reading.h"
#include "platform/kernel.h"
#include "platform/keyboard.h"
#include "platform/linux/windows/message_loop.h"
#include "scan/barcode_data.h"
#include "scan/decode_record.h"
#include "scan/rfid_data.h"
#include "scan/typing.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/scan/delivery_terminal.h"
#include "tests/scan/scans.h"
#include "tests/support/allocation_count.h"
#include "tests/support/manual_clock.h"

namespace {

using namespace std::string_literals;

// The bytes that other programs get.
std::string RecordOf(const char* data) {
    DecodeRecord record;
    BuildDecodeRecord(BarcodeScan('A', data), record);
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

void Deliver(DeliveryTerminal& terminal, std::string_view data) {
    terminal.OnReceiveThread([&] { DeliverScan(ReaderFamily::Decoder1D, BarcodeScan('A', data)); });
}

// Whether the busy timer runs; it is stopped.
bool TakeBusyTimer() {
    return KillTimer(ShellState.MainWindow, IDT_DELIVERY_BUSY) != FALSE;
}

TEST(Delivery, EveryCombinationOfChannels) {
    DeliveryTerminal terminal(Device1D);
    for (WORD output = '0'; output <= '8'; ++output) {
        SCOPED_TRACE(output);
        const bool keys = (output & 1) != 0, messages = (output & 2) != 0, event = (output & 4) != 0;
        SetValue(general::DataOutput, output);
        ShellState.TransferBusy = 1;
        terminal.Keys->Clear();
        terminal.Messages.clear();
        Deliver(terminal, "AB12");
        EXPECT_EQ(terminal.TakeEvent(), event);
        EXPECT_EQ(terminal.TakeRecord(), messages || event ? RecordOf("AB12") : "");
        EXPECT_EQ(terminal.Messages,
                  messages ? std::vector<std::string>({"copydata", "decode 7"}) : std::vector<std::string>());
        EXPECT_EQ(terminal.Keys->Text(), keys ? "AB12" : "");
        EXPECT_EQ(ShellState.TransferBusy, keys ? 1 : 0);
        EXPECT_EQ(TakeBusyTimer(), keys);
    }
}

TEST(Delivery, SettingsShapeTheLine) {
    DeliveryTerminal terminal(Device1D);
    const WCHAR prefix[] = TEXT("<P"), suffix[] = TEXT("S>");
    SetText(general::PrefixCode, prefix);
    SetText(general::SuffixCode, suffix);
    SetValue(general::IncludeCodeType, '1');
    SetValue(general::IncludeCodeLength, '1');
    const struct {
        WORD Place, Character;
        std::string Line;
    } cases[] = {
        {'0', '1', "A003<PabcS>"},   {'1', '0', "A003<PabcS>"},    {'1', '1', "A003<PabcS>\r"},
        {'1', '3', "A003<PabcS> "},  {'1', '4', "A003<PabcS>,"},   {'2', '1', "\rA003<PabcS>"},
        {'2', '2', "\tA003<PabcS>"}, {'2', '5', ";A003<PabcS>"},   {'3', '1', "A003<PabcS>"},
        {'1', '6', "A003<PabcS>"},   {'1', 0xFFFF, "A003<PabcS>"},
    };
    for (const auto& [place, character, line] : cases) {
        SetValue(general::AutoEnter, place);
        SetValue(general::AutoEnterCharacter, character);
        terminal.Keys->Clear();
        Deliver(terminal, "abc");
        EXPECT_EQ(terminal.Keys->Text(), line);
    }
}

TEST(Delivery, TabsAreHeldFor5MillisecondsAtTheirEnd) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(Device1D, &clock);
    SetValue(general::AutoEnterCharacter, '2');
    for (const WORD place : {WORD{'1'}, WORD{'2'}}) {
        SetValue(general::AutoEnter, place);
        terminal.Keys->Clear();
        Deliver(terminal, "12");
        const auto events = terminal.Keys->Events();
        ASSERT_EQ(events.size(), 6u);
        const std::size_t tab = place == '1' ? 4 : 0;
        EXPECT_EQ(events[tab].Key, VK_TAB);
        EXPECT_EQ(events[tab + 1].Key, VK_TAB);
        EXPECT_EQ(events[tab + 1].Time - events[tab].Time, 5u);
        EXPECT_EQ(events[5].Time - events[0].Time, 5u);
    }
}

TEST(Delivery, AQueueThatTakesNothingStopsOnlyTheRecord) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(Device1D, &clock);
    SetValue(general::DataOutput, '6');
    Deliver(terminal, "first");
    EXPECT_TRUE(terminal.TakeEvent());
    SetValue(general::DataOutput, '7');
    terminal.Messages.clear();

    // Nobody can take the first record away: three tries of 10 ms, then the keys.
    const HANDLE reader = ShellState.QueueReader.Exchange(nullptr);
    const std::uint64_t start = clock.Now();
    Deliver(terminal, "second");
    EXPECT_EQ(clock.Now() - start, 30u);
    EXPECT_FALSE(terminal.TakeEvent());
    EXPECT_TRUE(terminal.Messages.empty());
    EXPECT_EQ(terminal.Keys->Text(), "second");
    ShellState.QueueReader = reader;
    EXPECT_EQ(terminal.TakeRecord(), RecordOf("first"));

    CloseMsgQueue(ShellState.QueueWriter.Exchange(nullptr));
    Deliver(terminal, "third");
    EXPECT_FALSE(terminal.TakeEvent());
    EXPECT_TRUE(terminal.Messages.empty());
    EXPECT_EQ(terminal.Keys->Text(), "secondthird");
}

TEST(Delivery, ATagIsDeliveredWithoutTouchingTheBarcodeTransfer) {
    DeliveryTerminal terminal(DeviceImager | DeviceRfid);
    SetValue(general::DataOutput, '7');
    ShellState.TransferBusy = 1;
    terminal.OnReceiveThread([] { DeliverScan(TagScan("E004010012345678", "ABC")); });
    EXPECT_EQ(terminal.Keys->Text(), "E004010012345678");
    EXPECT_EQ(ShellState.TransferBusy, 1);
    EXPECT_FALSE(TakeBusyTimer());
    EXPECT_TRUE(terminal.TakeEvent());
    EXPECT_EQ(terminal.Messages, std::vector<std::string>({"copydata", "decode 32"}));
    EXPECT_EQ(terminal.TakeRecord().substr(0, 2), " V");
}

TEST(Delivery, TwoReadersAtOnceLoseNothingAndNeverMix) {
    DeliveryTerminal terminal(DeviceImager | DeviceRfid);
    SetValue(general::DataOutput, '5');
    SetValue(general::AutoEnter, '1');
    constexpr int Rounds = 40;
    for (const WORD enter : {WORD{'1'}, WORD{'2'}}) {
        SetValue(general::AutoEnterCharacter, enter);
        terminal.Keys->Clear();
        const auto often = [](const auto& deliver) {
            return [=] {
                for (int round = 0; round < Rounds; ++round) {
                    deliver();
                }
            };
        };
        terminal.OnReceiveThreads(
            {often([] { DeliverScan(ReaderFamily::Packet, BarcodeScan('A', "Label:With<Shift>")); }),
             often([] { DeliverScan(TagScan("e0040100aaBB", "")); })});
        int labels = 0, tags = 0;
        std::string line;
        for (const char character : terminal.Keys->Text()) {
            if (character != (enter == '1' ? '\r' : '\t')) {
                line += character;
                continue;
            }
            labels += line == "Label:With<Shift>";
            tags += line == "e0040100aaBB";
            line.clear();
        }
        EXPECT_EQ(labels, Rounds);
        EXPECT_EQ(tags, Rounds);
        EXPECT_EQ(line, "");
    }
}

// Whether the reading that is delivered lasts, asked before each step.
std::function<bool()> lasts;

void DeliverReading(DeliveryTerminal& terminal, std::function<bool()> whetherItLasts, const char* data) {
    lasts = std::move(whetherItLasts);
    terminal.OnReceiveThread([&] {
        JoinReading([] { return lasts(); });
        HandleBarcodeData(reinterpret_cast<const BYTE*>(data), static_cast<DWORD>(std::strlen(data)));
    });
}

TEST(Delivery, WhatIsLeftWhenTheReaderIsSwitchedOffDoesNotHappen) {
    DeliveryTerminal terminal(DeviceImager);
    SetValue(general::AutoEnter, '1');
    SetValue(general::AutoEnterCharacter, '2');
    SetValue(general::EnableVibrator, '1');
    // How often it is asked before the answer is no, and what has happened then.
    const struct {
        int Steps;
        bool Vibrated, Recorded;
        std::vector<std::string> Messages;
        std::string Keys;
    } cases[] = {
        {0, false, false, {}, ""},
        {1, true, false, {}, ""},
        {2, true, true, {}, ""},
        {3, true, true, {"copydata"}, ""},
        {4, true, true, {"copydata", "decode 7"}, ""},
        {5, true, true, {"copydata", "decode 7"}, "ABc1ABc1ABc1ABc1"},
        {6, true, true, {"copydata", "decode 7"}, "ABc1ABc1ABc1ABc1xy"},
        {8, true, true, {"copydata", "decode 7"}, "ABc1ABc1ABc1ABc1xy\t"},
    };
    SetValue(general::DataOutput, '7');
    for (const auto& each : cases) {
        SCOPED_TRACE(each.Steps);
        terminal.Keys->Clear();
        terminal.Messages.clear();
        WriteWholeFile(terminal.Terminal.Path("VIBRATOR"), "");
        ShellState.TransferBusy = 1;
        int steps = 0;
        DeliverReading(
            terminal, [&] { return steps++ < each.Steps; }, "\1ABc1ABc1ABc1ABc1xy");
        EXPECT_EQ(ReadWholeFile(terminal.Terminal.Path("VIBRATOR")).empty(), !each.Vibrated);
        EXPECT_EQ(terminal.TakeRecord().empty(), !each.Recorded);
        EXPECT_EQ(terminal.TakeEvent(), each.Recorded);
        EXPECT_EQ(terminal.Messages, each.Messages);
        EXPECT_EQ(terminal.Keys->Text(), each.Keys);
        EXPECT_EQ(TakeBusyTimer(), each.Keys.ends_with('\t'));
        EXPECT_EQ(ShellState.TransferBusy, 1);
    }
    // A turn that was not over when its reader went is free.
    DeliverReading(
        terminal, [] { return true; }, "\1next");
    EXPECT_EQ(terminal.Keys->Text(), "ABc1ABc1ABc1ABc1xy\tnext\t");
}

TEST(Delivery, AScanThatWaitsForItsTurnLeavesWhenItsReaderIsSwitchedOff) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(DeviceImager, &clock);
    const TypingTurn other;
    const std::uint64_t start = clock.Now();
    DeliverReading(
        terminal, [&] { return clock.Now() < start + 20; }, "\1late");
    EXPECT_EQ(clock.Now(), start + 20);
    EXPECT_EQ(terminal.Keys->Text(), "");
}

TEST(Delivery, NoKeyComesAfterAReadingHasBeenEnded) {
    DeliveryTerminal terminal(DeviceImager);
    static std::atomic<bool> on;
    for (int round = 0; round < 30; ++round) {
        on = true;
        terminal.Keys->Clear();
        std::thread typist([] {
            JoinReading([] { return on.load(); });
            while (TypeBytes(std::array<BYTE, 4>{'A', 'b', '?', '1'})) {
            }
        });
        for (int turn = 0; turn < round % 4; ++turn) {
            std::this_thread::yield();
        }
        on = false;
        FinishReadingStep();
        const std::size_t events = terminal.Keys->Events().size();
        typist.join();
        EXPECT_EQ(terminal.Keys->Events().size(), events);
        terminal.Keys->Text();  // no key is left down
    }
}

TEST(HandleData, ABrokenMessageOfThe1DReaderIsDroppedWithAWord) {
    DeliveryTerminal terminal(Device1D);
    for (const auto& [message, said] :
         {std::pair<std::string, bool>{"\033A00512\r", true}, {"OK\r", false}}) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(HandleBarcodeData(reinterpret_cast<const BYTE*>(message.data()),
                                    static_cast<DWORD>(message.size())),
                  0);
        EXPECT_EQ(testing::internal::GetCapturedStderr().find("dropped") != std::string::npos, said);
    }
}

// The wait cursor of a tag's read is left out: it is carried to the main thread, in memory of the platform's.
TEST(HandleData, AScanTakesNoMemoryFromTheHeap) {
    const std::string packet = "\013Ab12", message = "\033A005Ab12\xE9\r";
    const RfidScanData tag = TagScan("E004", "data");
    const auto handle = [](const std::string& bytes) {
        HandleBarcodeData(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
    };
    const std::pair<WORD, std::function<void()>> cases[] = {
        {Device1D, [&] { handle(message); }},
        {DeviceImager, [&] { handle(packet); }},
        {DeviceRfid, [&] { DeliverScan(tag); }},
    };
    for (const auto& [device, scan] : cases) {
        DeliveryTerminal terminal(device);
        for (const Setting* setting : {&general::IncludeCodeType, &general::IncludeCodeLength,
                                       &general::AutoEnter, &general::ReadRfidData}) {
            SetValue(*setting, '1');
        }
        SetValue(general::AutoEnterCharacter, '2');
        SetValue(general::DataOutput, '5');
        std::size_t taken = 1;
        terminal.OnReceiveThread([&] {
            scan();  // the platform makes its own objects on first use
            // Setting a timer wakes the main thread, which takes memory that is the platform's.
            const HWND window = ShellState.MainWindow.Exchange(nullptr);
            const CountAllocations count;
            scan();
            taken = count.Count();
            ShellState.MainWindow = window;
        });
        EXPECT_EQ(taken, 0u) << device;
    }
}

TEST(HandleRfid, ALineThatIsNoTagIsNotDelivered) {
    DeliveryTerminal terminal(DeviceRfid);
    SetValue(general::DataOutput, '5');
    const std::string longest = "V" + std::string(22, 'A');
    for (const std::string& line : {""s, longest + "B", longest + std::string(200, 'B')}) {
        terminal.OnReceiveThread([&] { EXPECT_EQ(HandleRfidData(line.c_str(), 0), 0); });
    }
    EXPECT_EQ(HandleRfidData(nullptr, 0), 0);
    EXPECT_FALSE(terminal.TakeEvent());
    terminal.OnReceiveThread([&] { EXPECT_EQ(HandleRfidData(longest.c_str(), 0), 1); });
    EXPECT_EQ(terminal.Keys->Text(), std::string(22, 'A'));
    EXPECT_EQ(terminal.TakeRecord().substr(12, 23), std::string(22, 'A') + '\0');
}

}  // namespace
