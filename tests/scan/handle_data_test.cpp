// From a reader's message to keys and records.
#include <gtest/gtest.h>

#include "scan/barcode_data.h"
#include "scan/delivery.h"
#include "scan/rfid_data.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/scan/delivery_terminal.h"
#include "tests/scan/scans.h"
#include "tests/support/allocation_count.h"

namespace {

using namespace std::string_literals;

int HandleBarcode(DeliveryTerminal& terminal, const std::string& message) {
    int result = -1;
    terminal.OnReceiveThread([&] {
        result = HandleBarcodeData(reinterpret_cast<const BYTE*>(message.data()),
                                   static_cast<DWORD>(message.size()));
    });
    return result;
}

TEST(HandleBarcode, OneMessageOneScan) {
    DeliveryTerminal terminal(Device1D);
    EXPECT_EQ(HandleBarcode(terminal, "\033A00512345\r"), 1);
    EXPECT_EQ(HandleBarcode(terminal, "\033A01012345\r"), 0);
    EXPECT_EQ(HandleBarcode(terminal, ""), 0);
    EXPECT_EQ(HandleBarcodeData(nullptr, 0), 0);
    EXPECT_EQ(HandleBarcode(terminal, "\033B00267\r"), 1);
    EXPECT_EQ(terminal.Keys->Text(), "1234567");

    // The 1D reader's form counts as soon as its bit is set, whatever else is.
    DeviceFlags = DeviceLaser | DeviceRfid;
    terminal.Keys->Clear();
    SetValue(general::IncludeCodeType, '1');
    EXPECT_EQ(HandleBarcode(terminal, "\0134006381333931"), 1);
    EXPECT_EQ(HandleBarcode(terminal, "\015x"), 1);
    EXPECT_EQ(HandleBarcode(terminal, "\x01"), 1);
    EXPECT_EQ(terminal.Keys->Text(), "P4006381333931xA");
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
