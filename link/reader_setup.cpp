#include "link/reader_setup.h"

#include <string_view>

#include "link/command_exchange.h"
#include "link/detection.h"
#include "link/readers/barcode_reader.h"
#include "link/serial_ports.h"
#include "settings/record.h"
#include "shell/log.h"

namespace {

// Whether the reply to the command contains the mark; an empty mark takes any reply.
bool Confirmed(HANDLE port, std::string_view command, std::string_view mark) {
    ReaderReply reply;
    return RequestReply(port, command, reply) && ReplyContains(reply, mark);
}

bool InitializeRfidReader(HANDLE port) {
    const bool model100 = RfidReaderModel == 100;
    const std::string_view setup = model100 ? "wp0B08" : "wp0B80";
    const std::string_view setupMark = model100 ? "08" : "80";
    const bool configured = Confirmed(port, ".", {}) &&
                            (Confirmed(port, setup, setupMark) || Confirmed(port, setup, setupMark)) &&
                            Confirmed(port, "wp0E7F", "7F") && Confirmed(port, "wp0C03", "03") &&
                            Confirmed(port, "x", {});
    if (!configured) {
        Log(LogPriority::Warning, TEXT("the RFID reader has not confirmed its set-up"));
        return false;
    }
    Log(LogPriority::Info, TEXT("the RFID reader is set up"));
    SetPortRate(port, RfidWorkingRate);
    return true;
}

}  // namespace

bool InitializeReader(HANDLE port, WORD type) {
    PurgePort(port);
    if (type == DeviceRfid) {
        return InitializeRfidReader(port);
    }
    const BarcodeReader* reader = FindBarcodeReader(type);
    return reader && reader->SetUp(port);
}
