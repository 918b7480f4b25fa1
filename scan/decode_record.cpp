#include "scan/decode_record.h"

#include <algorithm>
#include <cstring>

namespace {

static_assert(sizeof(RfidScanData::uid) < sizeof(DecodeRecord::uid));
static_assert(sizeof(RfidScanData::data) < sizeof(DecodeRecord::data));

// The text ends with a zero in the record, too: its fields are longer than the scan's.
DWORD CopyText(std::span<const char> from, void* to) {
    const std::string_view text = TextIn(from);
    std::memcpy(to, text.data(), text.size());
    return static_cast<DWORD>(text.size());
}

}  // namespace

void BuildDecodeRecord(const ScanData& scan, DecodeRecord& record) {
    record = {};
    record.source = SourceBarcode;
    record.codeType = scan.codeType;
    record.length = std::min<DWORD>(scan.length, MaximumScanLength);
    std::memcpy(record.data, scan.data, record.length);
}

void BuildDecodeRecord(const RfidScanData& scan, bool withUid, bool withData, DecodeRecord& record) {
    record = {};
    record.source = SourceRfid;
    record.codeType = scan.tagType;
    if (withUid) {
        CopyText(scan.uid, record.uid);
    }
    if (withData) {
        record.length = CopyText(scan.data, record.data);
    }
}
