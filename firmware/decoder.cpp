#include "firmware/decoder.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "shell/error_messages.h"
#include "shell/shell_state.h"

namespace {

constexpr DWORD AfterWrite = 10;
constexpr DWORD DownloadModeDelay = 20;
constexpr DWORD EraseTimeout = 5000;
constexpr int FrameSends = 4;
constexpr BYTE Escape = 0x1B;

std::span<const BYTE> BytesOf(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
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
    std::array<BYTE, ReplyLimit> read;
    const ReplyWindow window{port, EndsInCarriageReturn, EraseTimeout};
    for (;;) {
        const std::span<const BYTE> came = window.Next(read);
        if (came.empty()) {
            return false;
        }
        for (const BYTE received : came) {
            if (Feed(erased, received)) {
                return true;
            }
        }
    }
}

}  // namespace

bool FirmwareUpgradable() {
    const BarcodeReader* reader = FittedBarcodeReader();
    return reader && reader->Upgradable;
}

bool FirmwareExchange(HANDLE port, std::span<const BYTE> bytes, ReaderReply& reply) {
    if (port == nullptr) {
        return false;
    }
    PurgePort(port);
    if (!WriteWithRetries(port, bytes.data(), static_cast<DWORD>(bytes.size()))) {
        return false;
    }
    Sleep(AfterWrite);
    return CollectReply(port, EndsInCarriageReturn, ReplyTimeout, reply);
}

ErrorCode QueryFirmwareVersion(HANDLE port, DWORD timeout, std::span<BYTE> version) {
    if (port == nullptr) {
        return ErrorSetBarcodeReader;
    }
    PurgePort(port);
    if (!SendReaderCommand(port, "VER")) {
        return ErrorSetBarcodeReader;
    }
    Sleep(AfterWrite);
    const DWORD start = GetTickCount();
    ReaderReply reply;
    do {
        const DWORD passed = GetTickCount() - start;
        if (passed > timeout || !CollectReply(port, EndsInCarriageReturn, timeout - passed, reply)) {
            return NoResult;
        }
    } while (reply.Length == 0);  // zero bytes alone are no answer
    StoreVersion(reply, version);
    return Success;
}

ErrorCode EnterDownloadMode() {
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

ErrorCode SendFirmwareFrame(FirmwareFrame& frame) {
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
