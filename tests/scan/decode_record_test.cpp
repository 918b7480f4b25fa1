// The record for other programs, and how a watcher prints it.
#include "scan/decode_record.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/scan/scans.h"
#include "tools/record_json.h"

namespace {

using namespace std::string_literals;

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
    EXPECT_EQ(RecordBytes(BarcodeScan('A', "AB12")), Expected({{0, "\007A"}, {8, "\x04"}, {133, "AB12"}}));
    for (const std::string& data : {"\0\xFF\0"s, std::string(4095, 'z')}) {
        const std::string length = {static_cast<char>(data.size()), static_cast<char>(data.size() >> 8)};
        EXPECT_EQ(RecordBytes(BarcodeScan('\0', data)), Expected({{0, "\x07"}, {8, length}, {133, data}}));
    }
}

TEST(DecodeRecord, TagBytes) {
    const std::string uid = "E004010012345678", longest(1020, 'm');
    const RfidScanData scan = TagScan(uid.c_str(), "ABC");
    EXPECT_EQ(RecordBytes(scan, true, true), Expected({{0, "\x20V"}, {8, "\x03"}, {12, uid}, {133, "ABC"}}));
    EXPECT_EQ(RecordBytes(scan, true, false), Expected({{0, "\x20V"}, {12, uid}}));
    EXPECT_EQ(RecordBytes(TagScan("", longest.c_str()), false, true),
              Expected({{0, "\x20V"}, {8, "\xFC\x03"}, {133, longest}}));
}

TEST(RecordJson, RecordsThatLieAreSaid) {
    std::vector<BYTE> record(4232);
    record[8] = 0x03;
    record[9] = 0x10;  // 4,099: the field's size
    EXPECT_NE(RecordJson("event", record).find("\"length\":4099,"), std::string::npos);
    record[8] = 0x04;
    EXPECT_EQ(RecordJson("event", record), R"({"channel":"event","error":"a length of 4100"})");
    record[11] = 0xFF;
    EXPECT_NE(RecordJson("event", record).find("error"), std::string::npos);
    record.pop_back();
    EXPECT_EQ(RecordJson("event", record), R"({"channel":"event","error":"a record of 4231 bytes"})");

    record.assign(4232, 'u');
    std::memset(record.data() + 8, 0, 4);
    EXPECT_NE(RecordJson("event", record).find("\"uid\":\"" + std::string(121, 'u') + "\","),
              std::string::npos);

    record.assign(4232, 0);
    record[1] = '"';
    record[8] = 4;
    std::memcpy(record.data() + 133, "\\\xE9\0\r", 4);
    EXPECT_EQ(
        RecordJson("x", record),
        R"({"channel":"x","source":0,"codeType":"\"","length":4,"uid":"","text":"\\\u00e9\u0000\u000d",)"
        R"("hex":"5CE9000D"})");
}

}  // namespace
