// Whole firmware files, made by a public tool, through the real port into the simulated decoder, and what
// becomes of files and dialogs when something fails on the way.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "firmware/transfer.h"
#include "firmware/upgrade.h"
#include "link/serial_ports.h"
#include "platform/linux/windows/start_windows.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"
#include "tests/e2e/program.h"
#include "tests/e2e/readers.h"
#include "tests/firmware/firmware_text.h"
#include "tests/support/temporary_terminal.h"

namespace {

constexpr LPCWSTR FirmwareName = TEXT("\\DiskOnChip\\F.SHX");
constexpr DWORD DecoderRate = 115200;
const std::string Good = RecordLine('3', 0x00010000, {1, 2, 3, 4});

using Segment = std::pair<std::uint32_t, std::size_t>;  // address and size

struct Firmware {
    char Type;
    int LineData;  // data bytes of a line
    std::vector<Segment> Segments;
};

std::string RandomBytes(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, 0);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

class FirmwareTransfer : public testing::Test {
  protected:
    FirmwareTransfer() {
        layer::StartWindows();
        Wire = std::make_unique<Readers>(std::vector<std::string>{"--barcode", "1d", "--quiet"});
        DeviceFlags = Device1D;
        ShellState.BarcodePort = OpenReaderPort(BarcodePortSelector);
        SetPortLine(ShellState.BarcodePort, DecoderRate);
        SetPortTimeouts(ShellState.BarcodePort, MAXDWORD);
        Wire->Command("restart-ms 0");
    }
    ~FirmwareTransfer() override { CloseReaderPort(ShellState.BarcodePort); }

    std::string FirmwarePath() const { return Terminal.Path("DiskOnChip/F.SHX"); }

    ErrorCode Load(const std::string& text) {
        WriteWholeFile(FirmwarePath(), text);
        return LoadFirmware(nullptr, FirmwareName);
    }
    std::string Image() {
        Wire->Command("image " + Terminal.Path("image.bin"));
        return ReadWholeFile(Terminal.Path("image.bin"));
    }

    // The options are those of the page for whoever does an upgrade.
    void Generate(const Firmware& firmware) {
        std::vector<std::string> command;
        unsigned seed = 1;
        for (const auto& [address, size] : firmware.Segments) {
            const std::string part = Terminal.Path("part" + std::to_string(seed));
            WriteWholeFile(part, RandomBytes(size, seed++));
            command.insert(command.end(), {part, "-binary", "-offset", std::to_string(address)});
        }
        const bool s3 = firmware.Type == '3';
        const std::vector<std::string> output = {
            "-o",
            FirmwarePath(),
            "-motorola",
            s3 ? "-address-length=4" : "-address-length=3",
            "-obs=" + std::to_string(firmware.LineData),
            "-disable=header",
            "-disable=data-count",
            "-CRLF",
            s3 ? "-execution-start-address=0" : "-disable=execution-start-address"};
        command.insert(command.end(), output.begin(), output.end());
        ASSERT_EQ(RunProgram("srec_cat", command), 0);
        if (!s3) {
            std::string text = ReadWholeFile(FirmwarePath());
            WriteWholeFile(FirmwarePath(), text + "S9030000FC\r\n");
        }
    }

    TemporaryTerminal Terminal;
    std::unique_ptr<Readers> Wire;
};

TEST_F(FirmwareTransfer, GeneratedFilesArriveByteForByte) {
    const Firmware files[] = {
        {'3', 32, {{0xFFFFFFFE, 1}}},
        {'2', 32, {{0x00FFFF, 1}}},
        {'3', 32, {{0x5, 300}, {0x200, 1}, {0x202, 93}, {0x10000, 4096}, {0x8000000, 1023}}},
        {'2', 16, {{0x10, 500}, {0x10001, 255}, {0xFFFF00, 250}}},
        {'2', 37, {{0x20003, 9001}}},
        {'3', 249, {{0x1, 10000}}},
        {'3', 240, {{0x8000, 1 << 18}}},
    };
    for (const Firmware& firmware : files) {
        SCOPED_TRACE(firmware.Segments[0].first);
        ASSERT_NO_FATAL_FAILURE(Generate(firmware));
        Wire->Forget();
        ASSERT_EQ(LoadFirmware(nullptr, FirmwareName), Success);
        EXPECT_TRUE(Wire->Saw("event end-frame"));
        std::vector<std::string> loaded = Wire->Command("image");
        std::erase_if(loaded, [](const std::string& line) { return line.find("segment ") != 0; });
        EXPECT_EQ(loaded.size(), firmware.Segments.size());
        unsigned seed = 1;
        for (const auto& [address, size] : firmware.Segments) {
            Wire->Command("image " + Terminal.Path("image.bin") + " " + std::to_string(address) + " " +
                          std::to_string(size));
            EXPECT_TRUE(ReadWholeFile(Terminal.Path("image.bin")) == RandomBytes(size, seed++)) << address;
        }
        EXPECT_EQ(Wire->Count("event bad-frame"), 0);
        EXPECT_EQ(Wire->Count("event overwritten"), 0);
    }
}

TEST_F(FirmwareTransfer, FilesThatAreRefusedReachNobody) {
    std::string unix = Good + std::string(EndLine);
    std::erase(unix, '\r');
    const std::string many = [] {
        std::string text;
        for (std::uint32_t i = 0; i < 3000; ++i) {
            text += RecordLine('3', i * 32, Octets(32, 0x5A));
        }
        return text;
    }();
    const std::pair<std::string, DWORD> cases[] = {
        {unix, ErrorOpenFirmwareFile},
        {"S0030000FC\r\n" + Good + "S7", ErrorOpenFirmwareFile},
        {Good.substr(0, 20), ErrorOpenFirmwareFile},
        {many + "S1051000AABB85\r\nS7", ErrorOpenFirmwareFile},
        // An end without data would restart a decoder without firmware.
        {std::string(EndLine), ErrorOpenFirmwareFile},
        {"", ErrorDownload},
        {many, ErrorDownload}};
    for (const auto& [text, result] : cases) {
        EXPECT_EQ(Load(text), result) << text.substr(0, 60);
    }
    Wire->Command("state");
    EXPECT_EQ(Wire->Count("event command"), 0);
    EXPECT_EQ(Wire->Count("event download-mode"), 0);
}

TEST_F(FirmwareTransfer, FileAndWindowsAreLeftInOrderByEveryFailure) {
    struct {
        const char* Fault;
        DWORD Result;
    } const cases[] = {
        {"download-refuse", ErrorSetBarcodeReader},
        {"erase-silent", ErrorSetBarcodeReader},
        {"erase-refuse", ErrorEraseFlash},
        {"erase-no-fb", ErrorEraseFlash},
        {"erase-no-fa", ErrorEraseFlash},
        {"frame-fb x4", ErrorDownload},
        {"frame-text XX", ErrorDownload},
        {"frame-silent after1", ErrorDownload},
        {"end-silent", ErrorDownload},
        {"frame-fn x3", Success},
        {"frame-fb x3 after1", Success},
    };
    const std::string text = RecordLine('3', 0, Octets(100, 1)) + RecordLine('3', 100, Octets(50, 2)) + "S7";
    for (const auto& c : cases) {
        Wire->Command("fault off");
        Wire->Command(std::string("fault ") + c.Fault);
        EXPECT_EQ(Load(text), c.Result) << c.Fault;
        EXPECT_EQ(GetActiveWindow(), nullptr) << c.Fault;
        if (c.Result == Success) {
            EXPECT_EQ(Image(), std::string(100, 1) + std::string(50, 2)) << c.Fault;
        }
        Wire->Command("power off");
        Wire->Command("power on");
    }
    // A reply that comes late and in pieces, and a decoder that erases slowly.
    Wire->Command("fault off");
    Wire->Command("erase-ms 1500");
    Wire->Command("fault com1 split 1 20 x6");
    EXPECT_EQ(Load(text), Success);
}

}  // namespace
