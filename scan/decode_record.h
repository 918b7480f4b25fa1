// The record of one scan that other programs receive. Pure; any thread.
#pragma once

#include <bit>
#include <cstddef>

#include "scan/scan_data.h"

inline constexpr BYTE SourceBarcode = 7;
inline constexpr BYTE SourceRfid = 32;

struct DecodeRecord {
    BYTE source;    // SourceBarcode or SourceRfid
    BYTE codeType;  // code type letter (0: unknown) or tag type letter
    BYTE reserved[6];
    DWORD length;  // data bytes
    char uid[121];
    BYTE data[4099];
};
static_assert(offsetof(DecodeRecord, length) == 8);
static_assert(offsetof(DecodeRecord, uid) == 12);
static_assert(offsetof(DecodeRecord, data) == 133);
static_assert(sizeof(DecodeRecord) == 4232);
static_assert(std::endian::native == std::endian::little, "length leaves the program low byte first");

// Fill every byte of the record; what the scan does not fill is zero.
void BuildDecodeRecord(const ScanData& scan, DecodeRecord& record);
void BuildDecodeRecord(const RfidScanData& scan, bool withUid, bool withData, DecodeRecord& record);
