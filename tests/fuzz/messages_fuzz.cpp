// Any bytes as a message of the 1D reader and a joined message of a scan engine: a scan is a part of what was
// sent, no longer than it says.
#include <algorithm>
#include <memory>

#include "link/framing.h"
#include "scan/barcode_data.h"
#include "tests/fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::span<const BYTE> message(bytes, size);
    const auto scan = std::make_unique<ScanData>();
    if (Parse1DMessage(message, *scan)) {
        Require(scan->length >= 1 && scan->length <= 999);
        const auto* data = reinterpret_cast<const BYTE*>(scan->Bytes().data());
        Require(std::search(bytes, bytes + size, data, data + scan->length) != bytes + size);
        Require(std::find(data, data + scan->length, 0) == data + scan->length);
        Require(std::find(bytes, bytes + size, 0x1B) != bytes + size);
        const DWORD whole = scan->length;
        DropCodeIdentifier(*scan);
        Require(scan->length == (whole >= 3 ? whole - 3 : whole));
    }
    Require(Next1DMessages(message).size() <= (size > 2 ? size - 2 : 0));
    if (!message.empty()) {
        ParsePacketMessage(message, *scan);
        Require(scan->length == std::min(size - 1, MaximumScanLength));
        Require(std::equal(scan->data, scan->data + scan->length, bytes + 1));
    }
    EscFrame frame;
    const std::size_t framed = BuildEscapeFrame(message, frame);
    Require(framed == (size <= EscapeCommandLimit ? size + EscapeOverhead : 0));
    return 0;
}
