// The 1D reader with its own decoder: text commands in escape frames, settings in one SAVE command.
#include "link/command_exchange.h"
#include "link/escape_frame.h"
#include "link/probe_reply.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "link/settings_download.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD AfterCommand = 50;  // it must have taken a command before the next one
constexpr DWORD ProbeDelay = 100;

WORD Probe(HANDLE port) {
    constexpr std::array<BYTE, 3> Command{'S', 'E', 'T'};
    EscFrame frame;
    const std::size_t size = BuildEscapeFrame(Command, frame);
    if (!WritePort(port, frame.data(), static_cast<DWORD>(size))) {
        return 0;
    }
    Sleep(ProbeDelay);
    ProbeAnswer buffer;
    const ReplyWindow window{port, NeverWhole, ProbeWindow};
    for (;;) {
        const std::span<const BYTE> answer = window.Next(buffer);
        if (answer.empty()) {
            return 0;
        }
        if (IsDecoderAnswer(answer)) {
            return Device1D;
        }
    }
}

bool SetUp(HANDLE) {
    return Save1DSettings() != 0;
}

bool Send(HANDLE port, std::span<const BYTE> command) {
    EscFrame frame;
    const std::size_t size = BuildEscapeFrame(command, frame);
    if (size == 0 || !WriteWithRetries(port, frame.data(), static_cast<DWORD>(size))) {
        return false;
    }
    Sleep(AfterCommand);
    return true;
}

DWORD Command(std::string_view command) {
    return SendReaderCommand(ShellState.BarcodePort, command) ? Success : ErrorSetBarcodeReader;
}

DWORD Press() {
    return Command("ON");
}

DWORD Release() {
    return Command("OFF");
}

bool Download() {
    return Save1DSettings() != 0;
}

}  // namespace

constinit const BarcodeReader Decoder1DReader{
    .Bit = Device1D,
    .Protocol = ReaderProtocol::Escape,
    .WorkingRate = 115200,
    .PowerUp = 1200,
    .MessageGap = 30,
    .KeepsRts = true,
    .Upgradable = true,
    .Probe = Probe,
    .SetUp = SetUp,
    .Send = Send,
    .WholeReply = EndsInCarriageReturn,
    .Press = Press,
    .Release = Release,
    .Download = Download,
    .Receive = TakeDecoderMessage,
};
