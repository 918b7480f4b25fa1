#include "scan/barcode_data.h"

#include <algorithm>

#include "link/read_control.h"
#include "link/readers/barcode_reader.h"
#include "scan/delivery.h"
#include "scan/read_feedback.h"
#include "settings/all_fields.h"
#include "shell/log.h"

namespace {

constexpr BYTE Ean128Letter = 'U';

int Handle1DScan(ScanData& scan) {
    if (scan.codeType == Ean128Letter) {
        if (!IsOn(decoder1d::Ean128Enabled)) {
            // The 1D reader decodes EAN-128 whatever it is told. A label of a switched-off kind must not end
            // the read that the user is holding the trigger for.
            RestartBarcodeRead();
            return 0;
        }
        if (!IsOn(decoder1d::Ean128TransmitCodeId)) {
            DropCodeIdentifier(scan);
        }
    }
    if (!GiveReadFeedback()) {
        return 0;
    }
    DeliverScan(ReaderFamily::Decoder1D, scan);
    return 1;
}

int Handle1DMessages(std::span<const BYTE> messages) {
    int delivered = 0;
    for (; !messages.empty(); messages = Next1DMessages(messages)) {
        ScanData scan;
        if (Parse1DMessage(messages, scan) != 0) {
            delivered |= Handle1DScan(scan);
        } else if (std::ranges::find(messages, EscapeByte) != messages.end()) {
            Log(LogPriority::Warning, TEXT("a message of the 1D reader was dropped: it is not whole"));
        }
    }
    return delivered;
}

int HandlePacketMessage(std::span<const BYTE> message) {
    if (!GiveReadFeedback()) {
        return 0;
    }
    ScanData scan;
    ParsePacketMessage(message, scan);
    DeliverScan(ReaderFamily::Packet, scan);
    return 1;
}

}  // namespace

int HandleBarcodeData(const BYTE* message, DWORD length) {
    if (message == nullptr || length == 0) {
        return 0;
    }
    const std::span<const BYTE> bytes(message, length);
    const BarcodeReader* reader = FittedBarcodeReader();
    return reader && reader->Protocol == ReaderProtocol::Escape ? Handle1DMessages(bytes)
                                                                : HandlePacketMessage(bytes);
}
