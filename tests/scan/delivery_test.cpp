#include "scan/delivery.h"

#include <gtest/gtest.h>

#include <cstring>

#include "app/shell_state.h"
#include "platform/keyboard.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/message_queue.h"
#include "scan/typing.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "tests/scan/delivery_terminal.h"

namespace {

using namespace std::string_literals;

ScanData Scan(char letter, const std::string& data) {
    ScanData scan{};
    scan.codeType = static_cast<BYTE>(letter);
    scan.length = static_cast<DWORD>(data.size());
    std::memcpy(scan.data, data.data(), data.size());
    return scan;
}

RfidScanData Tag(const char* uid, const char* data) {
    RfidScanData scan{};
    scan.tagType = 'V';
    std::strcpy(scan.uid, uid);
    std::strcpy(scan.data, data);
    return scan;
}

void Deliver(DeliveryTerminal& terminal, const ScanData& scan) {
    terminal.OnReceiveThread([&] { DeliverScan(ReaderFamily::Decoder1D, scan); });
}

// Whether the busy timer runs; it is stopped.
bool TakeBusyTimer() {
    return KillTimer(ShellState.MainWindow, IDT_DELIVERY_BUSY) != FALSE;
}

TEST(Delivery, EveryCombinationOfChannels) {
    DeliveryTerminal terminal(Device1D);
    for (WORD output = '0'; output <= '7'; ++output) {
        SCOPED_TRACE(output - '0');
        const bool keys = (output & 1) != 0, messages = (output & 2) != 0, event = (output & 4) != 0;
        SetValue(general::DataOutput, output);
        ShellState.TransferBusy = 1;
        terminal.Keys->Clear();
        terminal.Messages.clear();
        Deliver(terminal, Scan('A', "AB12"));

        EXPECT_EQ(terminal.TakeEvent(), event);
        EXPECT_EQ(terminal.TakeRecord(), messages || event ? BarcodeRecord('A', "AB12") : "");
        EXPECT_EQ(terminal.Messages,
                  messages ? std::vector<std::string>({"copydata", "decode 7"}) : std::vector<std::string>());
        if (messages) {
            EXPECT_EQ(terminal.CopiedRecord, BarcodeRecord('A', "AB12"));
            EXPECT_EQ(terminal.KeysBeforeCopy, 0u);
        }
        EXPECT_EQ(terminal.Keys->Text(), keys ? "AB12" : "");
        EXPECT_EQ(ShellState.TransferBusy, keys ? 1 : 0);
        EXPECT_EQ(TakeBusyTimer(), keys);
    }
}

TEST(Delivery, GarbageInTheSettingsDeliversNothingAndBlocksNothing) {
    DeliveryTerminal terminal(Device1D);
    for (const WORD output : {WORD{0}, WORD{'8'}, WORD{0xFFF0}}) {
        SetValue(general::DataOutput, output);
        ShellState.TransferBusy = 1;
        Deliver(terminal, Scan('A', "AB12"));
        EXPECT_EQ(terminal.Keys->Text() + terminal.TakeRecord(), "");
        EXPECT_EQ(ShellState.TransferBusy, 0);
    }
    SetValue(general::DataOutput, '1');
    SetValue(general::AutoEnter, '1');
    for (const WORD character : {WORD{0}, WORD{'6'}, WORD{0xFFFF}}) {
        SetValue(general::AutoEnterCharacter, character);
        terminal.Keys->Clear();
        Deliver(terminal, Scan('A', "x"));
        EXPECT_EQ(terminal.Keys->Text(), "x");
    }
}

TEST(Delivery, KeyEventsInTheirOrder) {
    DeliveryTerminal terminal(Device1D);
    SetValue(general::AutoEnter, '1');
    SetValue(general::AutoEnterCharacter, '1');
    Deliver(terminal, Scan('A', "B\xE9\t" + "\0"s + "1"));
    std::string events;
    for (const KeyEvent& event : terminal.Keys->Events()) {
        char text[8];
        std::snprintf(text, sizeof text, "%c%02X ", event.Up ? '-' : '+', event.Key);
        events += text;
    }
    EXPECT_EQ(events, "+10 +42 -42 -10 +31 -31 +0D -0D ");
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
        {'0', '1',
         "A003<Pabc"
         "S>"},
        {'1', '0',
         "A003<Pabc"
         "S>"},
        {'1', '1',
         "A003<Pabc"
         "S>\r"},
        {'1', '2', "A003<PabcS>\t"},
        {'1', '3', "A003<PabcS> "},
        {'1', '4', "A003<PabcS>,"},
        {'1', '5', "A003<PabcS>;"},
        {'2', '1', "\rA003<PabcS>"},
        {'2', '2', "\tA003<PabcS>"},
        {'2', '5', ";A003<PabcS>"},
        {'3', '1', "A003<PabcS>"},
    };
    for (const auto& [place, character, line] : cases) {
        SetValue(general::AutoEnter, place);
        SetValue(general::AutoEnterCharacter, character);
        terminal.Keys->Clear();
        Deliver(terminal, Scan('A', "abc"));
        EXPECT_EQ(terminal.Keys->Text(), line);
    }
}

TEST(Delivery, TheTriggerWaits12MillisecondsPerComposedByte) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(Device1D, &clock);
    clock.AddSource(layer::WindowTimers());
    ShellState.TransferBusy = 1;
    SetValue(general::AutoEnter, '1');
    SetValue(general::AutoEnterCharacter, '1');
    Deliver(terminal, Scan('A', "AB1\xE9"));
    clock.Advance(59);
    layer::PumpMessages();
    EXPECT_TRUE(terminal.Messages.empty());
    clock.Advance(1);
    layer::PumpMessages();
    EXPECT_EQ(terminal.Messages, std::vector<std::string>({"timer 924"}));
    clock.RemoveSource(layer::WindowTimers());
}

TEST(Delivery, TabsAreHeldFor5MillisecondsAtTheirEnd) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(Device1D, &clock);
    SetValue(general::AutoEnterCharacter, '2');
    for (const WORD place : {WORD{'1'}, WORD{'2'}}) {
        SetValue(general::AutoEnter, place);
        terminal.Keys->Clear();
        Deliver(terminal, Scan('A', "12"));
        const auto events = terminal.Keys->Events();
        ASSERT_EQ(events.size(), 6u);
        const std::size_t tab = place == '1' ? 4 : 0;
        EXPECT_EQ(events[tab].Key, VK_TAB);
        EXPECT_EQ(events[tab + 1].Key, VK_TAB);
        EXPECT_EQ(events[tab + 1].Time - events[tab].Time, 5u);
        EXPECT_EQ(events[5].Time - events[0].Time, 5u);
    }
}

TEST(Delivery, TheNewestRecordReplacesAnUnreadOne) {
    DeliveryTerminal terminal(Device1D);
    SetValue(general::DataOutput, '4');
    for (int scan = 0; scan < 5; ++scan) {
        Deliver(terminal, Scan('A', "scan " + std::to_string(scan)));
        EXPECT_TRUE(terminal.TakeEvent());
    }
    EXPECT_EQ(terminal.TakeRecord(), BarcodeRecord('A', "scan 4"));
    EXPECT_EQ(terminal.TakeRecord(), "");
}

TEST(Delivery, AQueueThatTakesNothingStopsOnlyTheRecord) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(Device1D, &clock);
    SetValue(general::DataOutput, '6');
    Deliver(terminal, Scan('A', "first"));
    EXPECT_TRUE(terminal.TakeEvent());
    SetValue(general::DataOutput, '7');
    terminal.Messages.clear();

    // Nobody can take the first record away: three tries of 10 ms, then the keys.
    const HANDLE reader = ShellState.QueueReader.Exchange(nullptr);
    const std::uint64_t start = clock.Now();
    Deliver(terminal, Scan('A', "second"));
    EXPECT_EQ(clock.Now() - start, 30u);
    EXPECT_FALSE(terminal.TakeEvent());
    EXPECT_TRUE(terminal.Messages.empty());
    EXPECT_EQ(terminal.Keys->Text(), "second");
    ShellState.QueueReader = reader;
    EXPECT_EQ(terminal.TakeRecord(), BarcodeRecord('A', "first"));

    CloseMsgQueue(ShellState.QueueWriter.Exchange(nullptr));
    Deliver(terminal, Scan('A', "third"));
    EXPECT_FALSE(terminal.TakeEvent());
    EXPECT_TRUE(terminal.Messages.empty());
    EXPECT_EQ(terminal.Keys->Text(), "secondthird");
}

TEST(Delivery, ATagIsDeliveredWithoutTouchingTheBarcodeTransfer) {
    DeliveryTerminal terminal(DeviceImager | DeviceRfid);
    SetValue(general::ReadRfidUid, '1');
    SetValue(general::ReadRfidData, '1');
    SetValue(general::UseDelimiter, '1');
    SetValue(general::Delimiter, ',');
    const RfidScanData tag = Tag("E004010012345678", "ABC");
    for (const WORD output : {WORD{'7'}, WORD{'6'}, WORD{'0'}}) {
        SetValue(general::DataOutput, output);
        ShellState.TransferBusy = 1;
        terminal.Keys->Clear();
        terminal.Messages.clear();
        terminal.OnReceiveThread([&] { DeliverScan(tag); });
        EXPECT_EQ(terminal.Keys->Text(), output == '7' ? "E004010012345678,ABC" : "");
        EXPECT_EQ(ShellState.TransferBusy, 1);
        EXPECT_FALSE(TakeBusyTimer());
        const std::string record = terminal.TakeRecord();
        EXPECT_EQ(terminal.TakeEvent(), output != '0');
        if (output == '0') {
            EXPECT_EQ(record, "");
            continue;
        }
        EXPECT_EQ(terminal.Messages, std::vector<std::string>({"copydata", "decode 32"}));
        ASSERT_EQ(record.size(), 4232u);
        EXPECT_EQ(record.substr(0, 2), " V");
        EXPECT_STREQ(record.data() + 12, "E004010012345678");
        EXPECT_STREQ(record.data() + 133, "ABC");
    }
}

TEST(Delivery, TwoReadersAtOnceLoseNothingAndNeverMix) {
    DeliveryTerminal terminal(DeviceImager | DeviceRfid);
    SetValue(general::DataOutput, '5');
    SetValue(general::ReadRfidUid, '1');
    SetValue(general::AutoEnter, '1');
    constexpr int Rounds = 40;
    for (const WORD enter : {WORD{'1'}, WORD{'2'}}) {
        SetValue(general::AutoEnterCharacter, enter);
        terminal.Keys->Clear();
        terminal.OnReceiveThreads({[] {
                                       for (int round = 0; round < Rounds; ++round) {
                                           DeliverScan(ReaderFamily::Packet, Scan('A', "Label:With<Shift>"));
                                       }
                                   },
                                   [] {
                                       for (int round = 0; round < Rounds; ++round) {
                                           DeliverScan(Tag("e0040100aaBB", ""));
                                       }
                                   }});
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

TEST(Delivery, AReaderThatIsHeldUpInItsLineStopsTheOtherFor5SecondsOnly) {
    layer::ManualClock clock;
    DeliveryTerminal terminal(DeviceImager, &clock);
    std::uint64_t start = 0;
    {
        const TypingTurn heldUp;
        start = clock.Now();
        Deliver(terminal, Scan('A', "late"));
        EXPECT_EQ(clock.Now() - start, 5000u);
        EXPECT_EQ(terminal.Keys->Text(), "late");
        // The late one had no turn and must not have given one back.
        Deliver(terminal, Scan('A', "r"));
        EXPECT_EQ(clock.Now() - start, 10000u);
    }
    Deliver(terminal, Scan('A', "!"));
    EXPECT_EQ(clock.Now() - start, 10000u);
    EXPECT_EQ(terminal.Keys->Text(), "later!");
}

}  // namespace
