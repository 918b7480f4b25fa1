// The 1D reader with its own decoder: text commands in escape frames, settings in one SAVE command.
#include <algorithm>

#include "link/command_exchange.h"
#include "link/detection.h"
#include "link/framing.h"
#include "link/hex_convert.h"
#include "link/parameter_download.h"
#include "link/probe_reply.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD AfterCommand = 50;  // it must have taken a command before the next one
constexpr DWORD ProbeDelay = 100;
constexpr int SaveTries = 2;

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

template <class Block>
bool SameWords(const Block& left, const Block& right) {
    return std::equal(left.begin(), left.end(), right.begin(),
                      [](const Relaxed<WORD>& a, const Relaxed<WORD>& b) { return WORD{a} == WORD{b}; });
}

bool NothingChanged() {
    return SameWords(SymbologySettings, SymbologySettingsBefore) &&
           SameWords(GeneralSettings, GeneralSettingsBefore);
}

// Nothing sets the reader's speed: one that was found at another than its working rate is at that speed again
// after the next start, even if nobody has looked for it then. The rate stays as it was when it answers at
// none.
void FindRate(HANDLE port) {
    const DWORD present = PortRate(port);
    if (ProbeReaderRates(port, Device1D)) {
        RaiseRts(port);
    } else {
        SetPortRate(port, present);
    }
}

bool SetUp(HANDLE) {
    return Save1DSettings();
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

ErrorCode Command(std::string_view command) {
    return SendReaderCommand(ShellState.BarcodePort, command) ? Success : ErrorSetBarcodeReader;
}

ErrorCode Press() {
    return Command("ON");
}

ErrorCode Release() {
    return Command("OFF");
}

}  // namespace

bool Save1DSettings() {
    if (NothingChanged()) {
        return true;
    }
    ParameterBlock block{};
    Build1DParameterBlock(block);
    constexpr std::string_view Save = "SAVE";
    std::array<BYTE, Save.size() + 2 * std::tuple_size_v<ParameterBlock>> command;
    BYTE* digits = std::copy(Save.begin(), Save.end(), command.data());
    HexConvert(HexEncode, block.data(), digits, static_cast<DWORD>(block.size()));

    const HANDLE port = ShellState.BarcodePort;
    SetPortTimeouts(port, MAXDWORD);
    for (int i = 0; i < SaveTries; ++i) {
        ReaderReply reply;
        const bool answered = RequestReply(port, command, reply);
        if (answered && ReplyContains(reply, "OK\r")) {
            return true;
        }
        // At a wrong speed it may be silent, or answer anything else.
        const bool refused = answered && ReplyContains(reply, "NG\r");
        if (i == 0 && !refused) {
            FindRate(port);
        }
    }
    return false;
}

constinit const BarcodeReader Decoder1DReader{
    .Name = TEXT("1D reader"),
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
    .Download = Save1DSettings,
    .Receive = TakeDecoderMessage,
};
