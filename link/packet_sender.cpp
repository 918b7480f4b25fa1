#include "link/packet_sender.h"

#include "link/serial_ports.h"
#include "link/ssi_packet.h"
#include "link/turn.h"

namespace {

// Nothing is called in it but the port and Sleep, so a turn lasts a few hundred milliseconds. Whoever has
// waited longer sends all the same.
constexpr DWORD LongestTurn = 2000;
Turn SendersTurn;

bool SendInTurn(HANDLE port, const SsiFrame& frame, std::size_t size) {
    SetRts(port, true);
    if (!WriteWithRetries(port, frame.data(), static_cast<DWORD>(size))) {
        return false;
    }
    SetRts(port, false);
    return true;
}

}  // namespace

bool SendPacket(HANDLE port, std::span<const BYTE> packet) {
    SsiFrame frame;
    const std::size_t size = SealSsiPacket(packet, frame);
    if (size == 0) {
        return false;
    }
    const bool mine = SendersTurn.Take(LongestTurn);
    const bool sent = SendInTurn(port, frame, size);
    if (mine) {
        SendersTurn.Give();
    }
    return sent;
}
