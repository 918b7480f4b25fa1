#include "scan/rfid_data.h"

#include <array>
#include <cstring>

#include "link/command_exchange.h"
#include "platform/window.h"
#include "scan/delivery.h"
#include "scan/read_feedback.h"
#include "scan/tag_memory.h"
#include "settings/all_fields.h"

namespace {

// The line's length, or one more than a line may have.
std::size_t LineLength(const char* line) {
    std::size_t length = 0;
    while (length <= TagLineLimit && line[length] != '\0') {
        ++length;
    }
    return length;
}

// Reads the wanted part of the tag's memory. The tag may leave the field at any block; what was read until
// then counts.
void ReadTagMemory(RfidScanData& scan) {
    const TagRange range = PlanTagRead({scan.firstBlock, scan.endBlock, scan.blockSize},
                                       Value(general::RfidStartPosition), Value(general::RfidMaximumLength));
    TagText memory{};
    for (DWORD block = range.FirstBlock; block < range.EndBlock; ++block) {
        std::array<char, RegisterTextLimit + 1> text{};
        if (ReadRfidRegister(static_cast<BYTE>(block), scan.blockSize, text.data()) != 1) {
            break;
        }
        AppendTagBlock(memory, TextIn(text));
    }
    CopyTagRange(memory, range, scan.data);
}

}  // namespace

int HandleRfidData(const char* line, DWORD) {
    const std::size_t length = line == nullptr ? 0 : LineLength(line);
    if (length == 0 || length > TagLineLimit) {
        return 0;
    }
    const HCURSOR cursor = GetCursor();
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));

    const TagGeometry geometry = GeometryOfTag({line, length});
    RfidScanData scan{};
    scan.tagType = static_cast<BYTE>(line[0]);
    scan.firstBlock = geometry.FirstBlock;
    scan.endBlock = geometry.EndBlock;
    scan.blockSize = geometry.BlockSize;
    if (IsOn(general::ReadRfidUid)) {
        std::memcpy(scan.uid, line + 1, length - 1);
    }
    if (IsOn(general::ReadRfidData) && scan.blockSize != 0) {
        ReadTagMemory(scan);
    }

    SetCursor(cursor);
    if (!GiveReadFeedback()) {
        return 0;
    }
    DeliverScan(scan);
    return 1;
}
