#include "link/command_exchange.h"

#include <algorithm>
#include <cstring>

#include "link/readers/barcode_reader.h"
#include "link/rfid_channel.h"
#include "link/rfid_text.h"
#include "link/serial_ports.h"
#include "link/turn.h"
#include "shell/log.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD BarcodeReplyDelay = 100;
constexpr DWORD RfidReplyDelay = 30;
constexpr DWORD LateRest = 100;
constexpr DWORD LongestTurn = 2000;  // whoever has waited longer sends all the same
constexpr int RegisterFailures = 3;
constexpr int RegisterRepeats = 10;

// One command at a time for the barcode reader. Nothing is called in a turn but the port and Sleep, so it
// lasts a few hundred milliseconds.
Turn SendersTurn;

bool SendText(HANDLE port, std::span<const BYTE> text) {
    const auto end = std::find(text.begin(), text.end(), BYTE{0});
    const std::size_t size = static_cast<std::size_t>(end - text.begin());
    return size != 0 && WriteWithRetries(port, text.data(), static_cast<DWORD>(size));
}

std::span<const BYTE> BytesOf(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

// A reply is searched as text: up to its first zero byte.
std::string_view TextOf(const ReaderReply& reply) {
    const auto* text = reinterpret_cast<const char*>(reply.Bytes.data());
    const std::string_view all(text, reply.Length);
    return all.substr(0, all.find('\0'));
}

// What may still come of a reply after its pause: taken as the reply to the next request it would give a
// block the content of another.
void ReadOn(HANDLE port, ReaderReply& reply) {
    BYTE* end = reply.Bytes.data() + reply.Length;
    const DWORD count = AwaitReply(port, EndsInLineFeed, LateRest, {end, ReplyLimit - reply.Length});
    end[count] = 0;
    reply.Length += count;
}

}  // namespace

bool SendReaderCommand(HANDLE port, std::span<const BYTE> command) {
    if (port == nullptr) {
        return false;
    }
    Log(LogPriority::Debug, TEXT("%u bytes for the %s reader"), static_cast<DWORD>(command.size()),
        port == ShellState.BarcodePort ? TEXT("barcode") : TEXT("RFID"));
    if (port != ShellState.BarcodePort) {
        return SendText(port, command);
    }
    const BarcodeReader* reader = FittedBarcodeReader();
    if (!reader) {
        return false;
    }
    const bool mine = SendersTurn.Take(LongestTurn);
    const bool sent = reader->Send(port, command);
    if (mine) {
        SendersTurn.Give();
    }
    return sent;
}

bool SendReaderCommand(HANDLE port, std::string_view command) {
    return SendReaderCommand(port, BytesOf(command));
}

bool CollectReply(HANDLE port, ReplyIsWhole isWhole, DWORD timeout, ReaderReply& reply) {
    std::array<BYTE, ReplyLimit> read;
    const DWORD count = AwaitReply(port, isWhole, timeout, read);
    const std::span<const BYTE> text = WithoutLeadingZeros(std::span(read).first(count));
    *std::copy(text.begin(), text.end(), reply.Bytes.begin()) = 0;
    reply.Length = static_cast<DWORD>(text.size());
    Log(LogPriority::Debug, TEXT("%u bytes in reply"), reply.Length);
    return count != 0;
}

bool RequestReply(HANDLE port, std::span<const BYTE> command, ReaderReply& reply) {
    reply.Length = 0;
    reply.Bytes[0] = 0;
    if (port == nullptr) {
        return false;
    }
    PurgePort(port);
    if (!SendReaderCommand(port, command)) {
        return false;
    }
    if (port == ShellState.RfidPort) {
        Sleep(RfidReplyDelay);
        return CollectReply(port, IsWholeRfidReply, ReplyTimeout, reply);
    }
    Sleep(BarcodeReplyDelay);
    const BarcodeReader* reader = FittedBarcodeReader();
    return CollectReply(port, reader ? reader->WholeReply : NeverWhole, ReplyTimeout, reply);
}

bool RequestReply(HANDLE port, std::string_view command, ReaderReply& reply) {
    return RequestReply(port, BytesOf(command), reply);
}

bool ReplyContains(const ReaderReply& reply, std::string_view mark) {
    return TextOf(reply).find(mark) != std::string_view::npos;
}

int ReadRfidRegister(BYTE number, DWORD blockSize, char* value) {
    constexpr char Hex[] = "0123456789abcdef";
    const std::array<BYTE, 3> command{'r', static_cast<BYTE>(Hex[number >> 4]),
                                      static_cast<BYTE>(Hex[number & 0x0F])};
    ReaderReply reply;
    int failures = 0;
    int repeats = 0;
    auto parse = ParseRegisterReply;
    for (;;) {
        const HANDLE port = RfidPortOfThisThread();
        if (!RequestReply(port, command, reply)) {
            return -1;
        }
        RegisterReply answer = parse(TextOf(reply), blockSize);
        if (answer.Answer == RegisterAnswer::Again || answer.Answer == RegisterAnswer::Broken) {
            ReadOn(port, reply);
            answer = parse(TextOf(reply), blockSize);
        }
        if (answer.Answer == RegisterAnswer::Broken) {
            parse = ParseLateReply;
        }
        switch (answer.Answer) {
            case RegisterAnswer::Refused:
                return -1;
            case RegisterAnswer::Failed:
            case RegisterAnswer::Broken:
                if (++failures == RegisterFailures) {
                    return 0;
                }
                break;
            case RegisterAnswer::Again:
                if (++repeats > RegisterRepeats) {
                    return -1;
                }
                break;
            case RegisterAnswer::Value:
                if (answer.Value.size() > RegisterTextLimit) {
                    return 0;  // no block is that long: cut it would be another content
                }
                std::copy(answer.Value.begin(), answer.Value.end(), value);
                value[answer.Value.size()] = '\0';
                return 1;
        }
    }
}
