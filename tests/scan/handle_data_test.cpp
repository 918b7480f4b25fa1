// From a reader's message to keys and records, with real ports behind the calls that the filter and the tag
// reads make.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <map>
#include <thread>

#include "app/shell_state.h"
#include "link/serial_ports.h"
#include "scan/barcode_data.h"
#include "scan/delivery.h"
#include "scan/rfid_data.h"
#include "settings/all_fields.h"
#include "settings/record.h"
#include "tests/scan/delivery_terminal.h"
#include "tests/support/allocation_count.h"

namespace {

using namespace std::string_literals;

// A pseudo-terminal behind a port of the terminal; the port is open while this lives.
class Port {
  public:
    Port(const DeliveryTerminal& terminal, const char* name, DWORD selector, Relaxed<HANDLE>& handle)
        : handle_(handle) {
        char device[64];
        EXPECT_EQ(openpty(&master_, &slave_, device, nullptr, nullptr), 0);
        termios raw{};
        cfmakeraw(&raw);
        tcsetattr(slave_, TCSANOW, &raw);
        const std::string link = terminal.Path() + "/" + name;
        unlink(link.c_str());
        EXPECT_EQ(symlink(device, link.c_str()), 0);
        handle_ = OpenReaderPort(selector);
        EXPECT_NE(handle_, nullptr);
    }
    ~Port() {
        CloseReaderPort(handle_);
        close(master_);
        close(slave_);
    }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    // What the system sends until nothing comes for that long.
    std::string Receive(int milliseconds) {
        std::string received;
        pollfd file{master_, POLLIN, 0};
        while (poll(&file, 1, milliseconds) == 1) {
            char bytes[256];
            const ssize_t count = read(master_, bytes, sizeof bytes);
            if (count <= 0) {
                break;
            }
            received.append(bytes, static_cast<std::size_t>(count));
        }
        return received;
    }
    void Send(const std::string& bytes) {
        EXPECT_EQ(write(master_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

  private:
    Relaxed<HANDLE>& handle_;
    int master_ = -1;
    int slave_ = -1;
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
    SetPortTimeouts(ShellState.BarcodePort, MAXDWORD);
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
        EXPECT_EQ(port.Receive(20), item.Sent);
        terminal.Keys->Clear();
        HandleBarcode(terminal, tiny);
        EXPECT_EQ(terminal.Keys->Text(), item.TypedTiny);
        port.Receive(20);
    }
}

TEST(HandleBarcode, TakesNoMemoryFromTheHeap) {
    for (const WORD devices : {Device1D, DeviceImager}) {
        DeliveryTerminal terminal(devices);
        SetValue(general::IncludeCodeType, '1');
        SetValue(general::IncludeCodeLength, '1');
        SetValue(general::AutoEnter, '1');
        SetValue(general::AutoEnterCharacter, '2');
        SetValue(general::DataOutput, '5');
        const std::string message = devices == Device1D ? "\033A005Ab12\xE9\r" : "\013Ab12";
        std::size_t taken = 0;
        terminal.OnReceiveThread([&] {
            const auto handle = [&] {
                HandleBarcodeData(reinterpret_cast<const BYTE*>(message.data()),
                                  static_cast<DWORD>(message.size()));
            };
            handle();  // the platform makes its own objects on first use
            // Setting a timer wakes the main thread, which takes memory that is the platform's.
            const HWND window = ShellState.MainWindow.Exchange(nullptr);
            const CountAllocations count;
            handle();
            taken = count.Count();
            ShellState.MainWindow = window;
        });
        EXPECT_EQ(taken, 0u);
    }
}

// The wait cursor is left out: it is carried to the main thread, in memory of the platform's.
TEST(HandleRfid, ATagTakesNoMemoryFromTheHeap) {
    DeliveryTerminal terminal(DeviceRfid);
    for (const Setting* setting : {&general::ReadRfidUid, &general::ReadRfidData, &general::UseDelimiter}) {
        SetValue(*setting, '1');
    }
    SetValue(general::Delimiter, ',');
    SetValue(general::DataOutput, '5');
    RfidScanData tag{};
    std::strcpy(tag.uid, "E004");
    std::strcpy(tag.data, "data");
    std::size_t taken = 1;
    terminal.OnReceiveThread([&] {
        DeliverScan(tag);
        const CountAllocations count;
        DeliverScan(tag);
        taken = count.Count();
    });
    EXPECT_EQ(taken, 0u);
}

// Answers register commands from a table, like a reader with a tag in its field.
class Tag {
  public:
    Tag(Port& port, std::map<std::string, std::string> answers)
        : thread_([this, &port, answers] {
              while (!over_) {
                  const std::string command = port.Receive(5);
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
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    std::string Commands;

  private:
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

TEST(HandleRfid, ReadsTheWantedBlocks) {
    DeliveryTerminal terminal(DeviceRfid);
    Port port(terminal, "COM2", RfidPortSelector, ShellState.RfidPort);
    SetPortTimeouts(ShellState.RfidPort, MAXDWORD);
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
        {"I0011", '1', '1', 6, 5, "0011/ghijk", "r06 r07 "},
        {"I0011", '1', '1', 0, 10, "0011/abcdefghij", "r05 r06 r07 "},
        {"I0011", '0', '1', 40, 127, "zzzz", "r0f "},
        {"I0011", '0', '1', 43, 127, "z", "r0f "},
        {"I0011", '1', '1', 44, 1, "0011/", ""},
        {"I0011", '1', '1', 0, 0, "0011/", ""},
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
