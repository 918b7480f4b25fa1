#include "link/await_reply.h"

#include <algorithm>

#include "link/framing.h"
#include "link/serial_ports.h"

namespace {

constexpr DWORD PollStep = 10;
constexpr DWORD ByteGap = 30;
constexpr DWORD LongestReply = 1000;  // of a line that never falls silent no more than that is taken

}  // namespace

bool IsWholePacket(std::span<const BYTE> reply) {
    if (reply.empty()) {
        return false;
    }
    const std::size_t length = reply.front();
    if (length < SsiHeaderSize || reply.size() < length + 2) {
        return false;
    }
    return SsiChecksum(reply.first(length)) == reply[length] * 0x100u + reply[length + 1];
}

bool EndsInCarriageReturn(std::span<const BYTE> reply) {
    return !reply.empty() && reply.back() == '\r';
}

bool EndsInLineFeed(std::span<const BYTE> reply) {
    return !reply.empty() && reply.back() == '\n';
}

bool NeverWhole(std::span<const BYTE>) {
    return false;
}

std::span<const BYTE> WithoutLeadingZeros(std::span<const BYTE> bytes) {
    return {std::find_if(bytes.begin(), bytes.end(), [](BYTE b) { return b != 0; }), bytes.end()};
}

DWORD AwaitReply(HANDLE port, ReplyIsWhole isWhole, DWORD timeout, std::span<BYTE> reply) {
    const DWORD start = GetTickCount();
    DWORD length = 0;
    DWORD last = start;
    for (;;) {
        const DWORD count = ReadPort(port, reply.data() + length, static_cast<DWORD>(reply.size()) - length);
        const DWORD now = GetTickCount();
        if (count != 0) {
            length += count;
            last = now;
            if (length == reply.size() || isWhole(WithoutLeadingZeros(reply.first(length)))) {
                return length;
            }
        }
        if (length == 0 ? now - start > timeout
                        : now - last >= ByteGap || now - start > timeout + LongestReply) {
            return length;
        }
        if (count == 0) {
            Sleep(PollStep);
        }
    }
}

std::span<const BYTE> ReplyWindow::Next(std::span<BYTE> buffer) const {
    const DWORD passed = GetTickCount() - Opened;
    return passed < Milliseconds ? buffer.first(AwaitReply(Port, IsWhole, Milliseconds - passed, buffer))
                                 : std::span<const BYTE>{};
}
