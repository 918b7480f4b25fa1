#include "link/command_exchange.h"

#include <algorithm>
#include <cstring>

#include "link/readers/barcode_reader.h"
#include "link/rfid_channel.h"
#include "link/rfid_text.h"
#include "link/serial_ports.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD BarcodeReplyDelay = 100;
constexpr DWORD RfidReplyDelay = 30;
constexpr DWORD PollStep = 10;
constexpr int RegisterFailures = 3;
constexpr int RegisterRepeats = 10;

int SendText(HANDLE port, std::span<const BYTE> text) {
    const auto end = std::find(text.begin(), text.end(), BYTE{0});
    const std::size_t size = static_cast<std::size_t>(end - text.begin());
    return size != 0 && WriteWithRetries(port, text.data(), static_cast<DWORD>(size)) ? 1 : 0;
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

void StoreReply(ReaderReply& reply, std::span<const BYTE> read) {
    const auto begin = std::find_if(read.begin(), read.end(), [](BYTE b) { return b != 0; });
    const auto end = std::copy(begin, read.end(), reply.Bytes.begin());
    reply.Length = static_cast<DWORD>(end - reply.Bytes.begin());
    *end = 0;
}

}  // namespace

int SendReaderCommand(HANDLE port, std::span<const BYTE> command) {
    if (port == nullptr) {
        return 0;
    }
    if (port != ShellState.BarcodePort) {
        return SendText(port, command);
    }
    const BarcodeReader* reader = FittedBarcodeReader();
    return reader && reader->Send(port, command) ? 1 : 0;
}

int SendReaderCommand(HANDLE port, std::string_view command) {
    return SendReaderCommand(port, BytesOf(command));
}

int RequestReply(HANDLE port, std::span<const BYTE> command, ReaderReply& reply) {
    StoreReply(reply, {});
    if (port == nullptr) {
        return 0;
    }
    PurgePort(port);
    if (!SendReaderCommand(port, command)) {
        return 0;
    }
    Sleep(port == ShellState.RfidPort ? RfidReplyDelay : BarcodeReplyDelay);
    const DWORD start = GetTickCount();
    std::array<BYTE, ReplyLimit> read;
    do {
        if (const DWORD count = ReadPort(port, read.data(), ReplyLimit)) {
            StoreReply(reply, {read.data(), count});
            return 1;
        }
        Sleep(PollStep);
    } while (GetTickCount() - start <= ReplyTimeout);
    return 0;
}

int RequestReply(HANDLE port, std::string_view command, ReaderReply& reply) {
    return RequestReply(port, BytesOf(command), reply);
}

bool ReplyContains(const ReaderReply& reply, std::string_view mark) {
    return TextOf(reply).find(mark) != std::string_view::npos;
}

bool ReplyAcknowledges(const ReaderReply& reply) {
    return ReplyContains(reply, "\x04\xD0");
}

int ReadRfidRegister(BYTE number, char* value) {
    constexpr char Hex[] = "0123456789abcdef";
    const std::array<BYTE, 3> command{'r', static_cast<BYTE>(Hex[number >> 4]),
                                      static_cast<BYTE>(Hex[number & 0x0F])};
    ReaderReply reply;
    int failures = 0;
    int repeats = 0;
    for (;;) {
        if (!RequestReply(RfidPortOfThisThread(), command, reply)) {
            return -1;
        }
        const RegisterReply answer = ParseRegisterReply(TextOf(reply));
        switch (answer.Answer) {
            case RegisterAnswer::Refused:
                return -1;
            case RegisterAnswer::Failed:
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
