#include "scan/decode_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

template <class... Arguments>
std::string RecordBytes(const Arguments&... arguments) {
    DecodeRecord record;
    std::memset(&record, 0xAA, sizeof record);
    BuildDecodeRecord(arguments..., record);
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

// A record as a consumer counts it: bytes at offsets, zero everywhere else.
std::string Expected(std::initializer_list<std::pair<std::size_t, std::string>> parts) {
    std::string bytes(4232, '\0');
    for (const auto& [offset, part] : parts) {
        bytes.replace(offset, part.size(), part);
    }
    return bytes;
}

TEST(DecodeRecord, BarcodeBytes) {
    using namespace std::string_literals;
    ScanData scan;
    std::memset(&scan, 0xAA, sizeof scan);
    scan.codeType = 'A';
    scan.length = 4;
    std::memcpy(scan.data, "AB12", 4);
    EXPECT_EQ(RecordBytes(scan), Expected({{0, "\007A"}, {8, "\x04"}, {133, "AB12"}}));

    scan.codeType = 0;
    scan.length = 3;
    std::memcpy(scan.data, "\0\xFF\0", 3);
    EXPECT_EQ(RecordBytes(scan), Expected({{0, "\x07"}, {8, "\x03"}, {133, "\0\xFF\0"s}}));

    scan.length = 4095;
    std::memset(scan.data, 'z', 4095);
    EXPECT_EQ(RecordBytes(scan), Expected({{0, "\x07"}, {8, "\xFF\x0F"}, {133, std::string(4095, 'z')}}));
}

TEST(DecodeRecord, TagBytes) {
    RfidScanData scan{};
    scan.tagType = 'V';
    std::strcpy(scan.uid, "E004010012345678");
    std::strcpy(scan.data, "ABC");
    const std::string uid = scan.uid;
    EXPECT_EQ(RecordBytes(scan, true, true), Expected({{0, "\x20V"}, {8, "\x03"}, {12, uid}, {133, "ABC"}}));
    EXPECT_EQ(RecordBytes(scan, true, false), Expected({{0, "\x20V"}, {12, uid}}));
    EXPECT_EQ(RecordBytes(scan, false, true), Expected({{0, "\x20V"}, {8, "\x03"}, {133, "ABC"}}));

    const std::string longest(1020, 'm');
    std::strcpy(scan.data, longest.c_str());
    EXPECT_EQ(RecordBytes(scan, false, true), Expected({{0, "\x20V"}, {8, "\xFC\x03"}, {133, longest}}));
}

}  // namespace
