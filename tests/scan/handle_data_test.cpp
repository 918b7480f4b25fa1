// From a reader's message to keys and records, with real ports behind the calls that the filter and the tag
// reads make.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <map>
#include <thread>

#include "link/serial_ports.h"
#include "scan/barcode_data.h"
#include "scan/delivery.h"
#include "scan/rfid_data.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "shell/shell_state.h"
#include "tests/platform/pseudo_terminal.h"
#include "tests/scan/delivery_terminal.h"
#include "tests/support/allocation_count.h"

namespace {

using namespace std::string_literals;

// A reader behind a port of the terminal; the port is open while this lives.
class Port : public PseudoTerminal {
  public:
    Port(const DeliveryTerminal& terminal, const char* name, DWORD selector, Relaxed<HANDLE>& handle)
        : handle_(handle) {
        LinkAs(terminal.Path() + "/" + name);
        handle_ = OpenReaderPort(selector);
        EXPECT_NE(handle_, nullptr);
        SetPortTimeouts(handle_, MAXDWORD);
    }
    ~Port() { CloseReaderPort(handle_); }

    // What the system sends until nothing comes for that long.
    std::string Hear(int milliseconds) {
        const std::vector<BYTE> bytes = Receive(4096, milliseconds);
        return {bytes.begin(), bytes.end()};
    }

  private:
    Relaxed<HANDLE>& handle_;
};

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

TEST(HandleBarcode, TheEan128Filter) {
    DeliveryTerminal terminal(Device1D);
    Port port(terminal, "COM1", BarcodePortSelector, ShellState.BarcodePort);
    const std::string frame = std::string(30, '\xFF') + "\033", off = frame + "OFF\r", on = frame + "ON\r";
    const std::string scan = "\033U010]C10112345\r", tiny = "\033U002]C\r";
    const struct {
        WORD Enabled, CodeId;
        DWORD Released;
        std::string Sent, Typed, TypedTiny;
    } cases[] = {
        {'0', '1', 1, off, "", ""},         {'0', '1', 0, off + on, "", ""},
        {0, '0', 0, off + on, "", ""},      {'1', '1', 0, "", "]C10112345", "]C"},
        {'1', '0', 0, "", "0112345", "]C"},
    };
    for (const auto& item : cases) {
        SetValue(decoder1d::Ean128Enabled, item.Enabled);
        SetValue(decoder1d::Ean128TransmitCodeId, item.CodeId);
        ShellState.TriggerReleased = item.Released;
        terminal.Keys->Clear();
        EXPECT_EQ(HandleBarcode(terminal, scan), item.Typed.empty() ? 0 : 1);
        EXPECT_EQ(terminal.Keys->Text(), item.Typed);
        EXPECT_EQ(port.Hear(20), item.Sent);
        terminal.Keys->Clear();
        HandleBarcode(terminal, tiny);
        EXPECT_EQ(terminal.Keys->Text(), item.TypedTiny);
        port.Hear(20);
    }
}

// The wait cursor of a tag's read is left out: it is carried to the main thread, in memory of the platform's.
TEST(HandleData, AScanTakesNoMemoryFromTheHeap) {
    const std::string packet = "\013Ab12", message = "\033A005Ab12\xE9\r";
    RfidScanData tag{};
    std::strcpy(tag.uid, "E004");
    std::strcpy(tag.data, "data");
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
                                       &general::AutoEnter, &general::ReadRfidUid, &general::ReadRfidData}) {
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

// Answers register commands from a table, like a reader with a tag in its field.
class Tag {
  public:
    Tag(Port& port, std::map<std::string, std::string> answers)
        : thread_([this, &port, answers] {
              while (!over_) {
                  const std::string command = port.Hear(5);
                  if (command.empty()) {
                      continue;
                  }
                  Commands += command + " ";
                  const auto found = answers.find(command);
                  port.Send((found != answers.end() ? found->second : "N") + "\r\n");
              }
          }) {}
    ~Tag() { Stop(); }
    void Stop() {
        over_ = true;
        if (thread_.joinable())
            thread_.join();
    }
    std::string Commands;

  private:
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

TEST(HandleRfid, ReadsTheWantedBlocks) {
    DeliveryTerminal terminal(DeviceRfid);
    Port port(terminal, "COM2", RfidPortSelector, ShellState.RfidPort);
    SetValue(general::UseDelimiter, '1');
    SetValue(general::Delimiter, '/');
    const std::map<std::string, std::string> memory = {
        {"r05", "61626364"}, {"r06", "65666768"}, {"r07", "696A6b6C"}, {"r08", "6D6E"},
        {"r09", "414"},      {"r0a", "41004243"}, {"r0f", "7A7A7A7A"}, {"r0b", "414243444546474849504"},
    };
    const struct {
        const char* Line;
        WORD Uid, Data, Start, Length;
        std::string Typed, Commands;
    } cases[] = {
        {"I0011", '1', '1', 0, 10, "0011/abcdefghij", "r05 r06 r07 "},
        {"I0011", '0', '1', 43, 127, "z", "r0f "},
        {"I0011", '1', '1', 44, 1, "0011/", ""},
        {"I0011", '1', '0', 0, 10, "0011", ""},
        {"I0011", '0', '0', 0, 10, "", ""},
        {"X0011", '1', '1', 0, 10, "0011/", ""},
        // A short block, one of odd length, one with a zero byte; the text goes on behind each.
        {"I0011", '0', '1', 12, 12, "mnA", "r08 r09 r0a "},
        // A block that fails (refused, or longer than a block can be) ends the data.
        {"I0011", '1', '1', 20, 12, "0011/A", "r0a r0b "},
        {"S0011", '1', '1', 0, 22, "0011/", "r04 "},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.Typed);
        SetValue(general::ReadRfidUid, item.Uid);
        SetValue(general::ReadRfidData, item.Data);
        SetValue(general::RfidStartPosition, item.Start);
        SetValue(general::RfidMaximumLength, item.Length);
        terminal.Keys->Clear();
        Tag tag(port, memory);
        int result = 0;
        terminal.OnReceiveThread([&] { result = HandleRfidData(item.Line, 0); });
        tag.Stop();
        EXPECT_EQ(result, 1);
        EXPECT_EQ(terminal.Keys->Text(), item.Typed);
        EXPECT_EQ(tag.Commands, item.Commands);
    }
}

TEST(HandleRfid, ALineThatIsNoTagIsNotDelivered) {
    DeliveryTerminal terminal(DeviceRfid);
    SetValue(general::ReadRfidUid, '1');
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
