#include "link/parameter_download.h"

#include <algorithm>

#include "link/command_exchange.h"
#include "link/serial_ports.h"
#include "shell/shell_state.h"

namespace {

// Looking for the two acknowledgement bytes anywhere would find them in other packets' data too.
bool BeginsWithAck(const ReaderReply& reply) {
    return reply.Length >= SsiReaderAck.size() &&
           std::equal(SsiReaderAck.begin(), SsiReaderAck.end(), reply.Bytes.begin());
}

int Download(ParameterRows rows) {
    ParameterPacket packet;
    BuildParameterPacket(rows, packet);
    if (packet.Length <= EmptyParameterPacket) {
        return 1;
    }
    const HANDLE port = ShellState.BarcodePort;
    SetPortTimeouts(port, MAXDWORD);
    ReaderReply reply;
    return RequestReply(port, std::span<const BYTE>(packet.Bytes.data(), packet.Length), reply) &&
           BeginsWithAck(reply);
}

}  // namespace

int DownloadLaserSettings() {
    return Download(ParameterRows::Laser);
}

int DownloadImagerSettings() {
    return Download(ParameterRows::ImagerFirst) && Download(ParameterRows::ImagerSecond);
}
