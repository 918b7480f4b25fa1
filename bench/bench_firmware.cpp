// How much of a firmware transfer is the wire's own time. Sends 256 KiB through a pseudo-terminal to the
// simulated decoder, which hears every byte only after the time that it needs at 115200 bit/s, and prints for
// each length of the file's lines, or the one that is given: frames, seconds on the wire (ten bits a byte,
// both directions), the least that the waits between two looks at the port allow, the seconds measured, and
// the wire's share in these two. Run it on a machine that has nothing else to do.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "firmware/decoder.h"
#include "firmware/firmware_frame.h"
#include "firmware/transfer.h"
#include "link/serial_ports.h"
#include "platform/linux/windows/start_windows.h"
#include "settings/record.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"
#include "tests/firmware/firmware_text.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_terminal.h"

namespace {

constexpr std::uint32_t FirmwareSize = 256 * 1024;
constexpr std::uint32_t FirstAddress = 0x00010000;
constexpr DWORD Rate = 115200;
constexpr double ByteSeconds = 10.0 / Rate;
constexpr std::size_t ReplySize = 3;
constexpr double PollSeconds = 0.010;  // a reply is looked for every 10 ms from the frame's writing on

std::string MakeFirmware(std::uint32_t lineData) {
    std::string text;
    for (std::uint32_t done = 0; done < FirmwareSize; done += lineData) {
        Octets data(std::min(lineData, FirmwareSize - done));
        for (std::uint8_t& byte : data) {
            byte = static_cast<std::uint8_t>(std::rand());
        }
        text += RecordLine('3', FirstAddress + done, data);
    }
    return text + std::string(EndLine);
}

bool Told(ChildProcess& readers, const std::string& command) {
    readers.WriteLine(command);
    while (const auto line = readers.ReadLine()) {
        if (*line == "ok") {
            return true;
        }
    }
    return false;
}

bool Measure(const std::string& text, std::uint32_t lineData) {
    auto frames = FramesOf(text);
    frames.emplace_back(EndFrame.begin(), EndFrame.end());
    double wire = 0, allowed = 0;
    for (const Octets& frame : frames) {
        const double seconds = static_cast<double>(frame.size() + ReplySize) * ByteSeconds;
        wire += seconds;
        allowed += std::ceil(seconds / PollSeconds) * PollSeconds;
    }

    HANDLE file = CreateFileW(TEXT("\\DiskOnChip\\F.SHX"), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (EnterDownloadMode() != Success) {
        return false;
    }
    const auto start = std::chrono::steady_clock::now();
    const ErrorCode result = TransferFirmwareFile(nullptr, file);
    const std::chrono::duration<double> all = std::chrono::steady_clock::now() - start;
    CloseHandle(file);
    std::printf("%10u %8zu %8.1f %8.1f %8.1f %9.0f %% %9.0f %%\n", lineData, frames.size(), wire, allowed,
                all.count(), 100 * wire / allowed, 100 * wire / all.count());
    std::fflush(stdout);
    return result == Success;
}

}  // namespace

int main(int count, char** arguments) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    layer::StartWindows();
    TemporaryTerminal terminal;
    ChildProcess readers({std::string(VANTREL_PROGRAMS) + "/vantrel-readers", "--terminal", terminal.Folder(),
                          "--barcode", "1d", "--quiet"});
    if (!readers.ReadLine() || !Told(readers, "receive-time on") || !Told(readers, "restart-ms 0")) {
        std::fprintf(stderr, "the simulated readers do not start\n");
        return 1;
    }
    DeviceFlags = Device1D;
    ShellState.BarcodePort = OpenReaderPort(BarcodePortSelector);
    SetPortLine(ShellState.BarcodePort, Rate);
    SetPortTimeouts(ShellState.BarcodePort, MAXDWORD);
    std::printf("256 KiB at 115200 bit/s\n%10s %8s %8s %8s %8s %11s %11s\n", "line data", "frames", "wire s",
                "least s", "all s", "share of it", "share");
    std::vector<std::uint32_t> lengths{16, 28, 32, 64, 128, 240};
    if (count > 1) {
        lengths = {static_cast<std::uint32_t>(std::clamp(std::atoi(arguments[1]), 1, 240))};
    }
    for (const std::uint32_t lineData : lengths) {
        const std::string text = MakeFirmware(lineData);
        WriteWholeFile(terminal.Path("DiskOnChip/F.SHX"), text);
        if (!Measure(text, lineData)) {
            std::fprintf(stderr, "the transfer fails\n");
            return 1;
        }
    }
    CloseReaderPort(ShellState.BarcodePort);
    readers.WriteLine("quit");
    return 0;
}
