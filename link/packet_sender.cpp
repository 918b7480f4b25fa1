#include "link/packet_sender.h"

#include <mutex>

#include "link/serial_ports.h"
#include "link/ssi_packet.h"

namespace {

// The one lock of the reader link. Nothing is called under it but the port and Sleep, so a turn lasts a few
// hundred milliseconds at most.
std::mutex SendersTurn;

}  // namespace

int SendPacket(HANDLE port, std::span<const BYTE> packet) {
    SsiFrame frame;
    const std::size_t size = SealSsiPacket(packet, frame);
    if (size == 0) {
        return 0;
    }
    const std::lock_guard turn(SendersTurn);
    SetRts(port, true);
    if (!WriteWithRetries(port, frame.data(), static_cast<DWORD>(size))) {
        return 0;
    }
    SetRts(port, false);
    return 1;
}
