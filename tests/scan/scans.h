// Scans as a reader would have brought them; what they do not fill is no zero.
#pragma once

#include <cstring>
#include <string_view>

#include "scan/scan_data.h"

inline ScanData BarcodeScan(char codeType, std::string_view data) {
    ScanData scan;
    std::memset(&scan, 0xAA, sizeof scan);
    scan.codeType = static_cast<BYTE>(codeType);
    scan.length = static_cast<DWORD>(data.size());
    std::memcpy(scan.data, data.data(), data.size());
    return scan;
}

inline RfidScanData TagScan(const char* uid, const char* data) {
    RfidScanData scan;
    std::memset(&scan, 0xAA, sizeof scan);
    scan.tagType = 'V';
    std::strcpy(scan.uid, uid);
    std::strcpy(scan.data, data);
    return scan;
}
