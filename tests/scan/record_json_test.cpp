#include "tools/record_json.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

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
