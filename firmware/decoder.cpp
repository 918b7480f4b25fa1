#include "firmware/decoder.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD PollStep = 10;
constexpr DWORD ByteGap = 30;  // a reply is over when so long nothing more has come
constexpr DWORD DownloadModeDelay = 20;
constexpr DWORD EraseTimeout = 5000;
constexpr int FrameSends = 4;
constexpr BYTE Escape = 0x1B;

std::span<const BYTE> BytesOf(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

void ClearReply(ReaderReply& reply) {
    reply.Length = 0;
    reply.Bytes[0] = 0;
}

// Reads on where the reply ends; leading zero bytes are dropped. Whether any byte came, zero or not.
bool ReadMore(HANDLE port, ReaderReply& reply) {
    BYTE* free = reply.Bytes.data() + reply.Length;
    const DWORD count = ReadPort(port, free, ReplyLimit - reply.Length);
    BYTE* end = free + count;
    if (reply.Length == 0) {
        end = std::copy(std::find_if(free, end, [](BYTE b) { return b != 0; }), end, free);
    }
    *end = 0;
    reply.Length = static_cast<DWORD>(end - reply.Bytes.data());
    return count != 0;
}

// Reads can fall into the middle of a reply: one byte takes a millisecond at the lowest speed.
void FinishReply(HANDLE port, ReaderReply& reply) {
    DWORD last = GetTickCount();
    while (reply.Length != 0 && reply.Length < ReplyLimit && reply.Bytes[reply.Length - 1] != '\r' &&
           GetTickCount() - last <= ByteGap) {
        Sleep(PollStep);
        if (ReadMore(port, reply)) {
            last = GetTickCount();
        }
    }
}

// Waits until a read has brought a byte; `zeros` says whether zero bytes alone count. Then takes the rest.
bool AwaitReply(HANDLE port, DWORD timeout, bool zeros, ReaderReply& reply) {
    ClearReply(reply);
    const DWORD start = GetTickCount();
    do {
        const bool came = ReadMore(port, reply);
        if (reply.Length != 0 || (came && zeros)) {
            FinishReply(port, reply);
            return true;
        }
        Sleep(PollStep);
    } while (GetTickCount() - start <= timeout);
    return false;
}

// "Ver" anywhere and an ESC: the version stands between the ESC and the reply's last character.
void StoreVersion(const ReaderReply& reply, std::span<BYTE> version) {
    if (!ReplyContains(reply, "Ver")) {
        return;
    }
    const auto end = std::find(reply.Bytes.begin(), reply.Bytes.begin() + reply.Length, BYTE{0});
    const auto escape = std::find(reply.Bytes.begin(), end, Escape);
    if (end - escape < 2) {
        return;
    }
    const auto begin = escape + 1;
    const auto size = std::min<std::ptrdiff_t>(end - 1 - begin, static_cast<std::ptrdiff_t>(version.size()));
    std::copy_n(begin, size, version.begin());
}

// Looks for a mark in a stream, wherever the reads cut it.
struct MarkSearch {
    std::string_view Mark;
    std::size_t Found;
};

bool Feed(MarkSearch& search, BYTE received) {
    const char character = static_cast<char>(received);
    if (character == search.Mark[search.Found]) {
        ++search.Found;
    } else {
        search.Found = character == search.Mark[0] ? 1 : 0;  // no mark begins twice with one character
    }
    return search.Found == search.Mark.size();
}

bool AwaitErased(HANDLE port) {
    MarkSearch erased{"FA\r", 0};
    const DWORD start = GetTickCount();
    do {
        std::array<BYTE, ReplyLimit> read;
        const DWORD count = ReadPort(port, read.data(), ReplyLimit);
        for (DWORD i = 0; i < count; ++i) {
            if (Feed(erased, read[i])) {
                return true;
            }
        }
        Sleep(PollStep);
    } while (GetTickCount() - start <= EraseTimeout);
    return false;
}

}  // namespace

bool FirmwareUpgradable() {
    const BarcodeReader* reader = FittedBarcodeReader();
    return reader && reader->Upgradable;
}

int FirmwareExchange(HANDLE port, std::span<const BYTE> bytes, ReaderReply& reply) {
    ClearReply(reply);
    if (port == nullptr) {
        return 0;
    }
    PurgePort(port);
    if (!WriteWithRetries(port, bytes.data(), static_cast<DWORD>(bytes.size()))) {
        return 0;
    }
    Sleep(PollStep);
    return AwaitReply(port, ReplyTimeout, true, reply) ? 1 : 0;
}

DWORD QueryFirmwareVersion(HANDLE port, DWORD timeout, std::span<BYTE> version) {
    if (port == nullptr) {
        return ErrorSetBarcodeReader;
    }
    PurgePort(port);
    if (!SendReaderCommand(port, "VER")) {
        return ErrorSetBarcodeReader;
    }
    Sleep(PollStep);
    ReaderReply reply;
    if (!AwaitReply(port, timeout, false, reply)) {
        return 0;
    }
    StoreVersion(reply, version);
    return Success;
}

DWORD EnterDownloadMode() {
    const HANDLE port = ShellState.BarcodePort;
    ReaderReply reply;
    if (!RequestReply(port, "DOWNLOAD\r", reply) || !ReplyContains(reply, "OK\r")) {
        return ErrorSetBarcodeReader;
    }
    Sleep(DownloadModeDelay);
    if (!FirmwareExchange(port, BytesOf("DOWNLOAD\r"), reply) || !ReplyContains(reply, "FN\r")) {
        return ErrorSetBarcodeReader;
    }
    if (!FirmwareExchange(port, BytesOf(":ERASE\r"), reply)) {
        return ErrorSetBarcodeReader;
    }
    if (!ReplyContains(reply, "FB\r")) {
        return ErrorEraseFlash;
    }
    if (ReplyContains(reply, "FA\r")) {
        return Success;
    }
    const HCURSOR cursor = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    const bool erased = AwaitErased(port);
    SetCursor(cursor);
    return erased ? Success : ErrorEraseFlash;
}

DWORD SendFirmwareFrame(FirmwareFrame& frame) {
    const std::span<const BYTE> bytes = SealFrame(frame);
    if (bytes.empty()) {
        return ErrorDownload;
    }
    for (int i = 0; i < FrameSends; ++i) {
        ReaderReply reply;
        if (!FirmwareExchange(ShellState.BarcodePort, bytes, reply)) {
            return ErrorDownload;
        }
        if (ReplyContains(reply, "FA\r")) {
            return Success;
        }
        if (!ReplyContains(reply, "FN\r") && !ReplyContains(reply, "FB\r")) {
            return ErrorDownload;
        }
    }
    return ErrorDownload;
}
