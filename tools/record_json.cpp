#include "tools/record_json.h"

#include <cstdio>

namespace {

constexpr std::size_t LengthOffset = 8;
constexpr std::size_t UidOffset = 12;
constexpr std::size_t DataOffset = 133;

std::string Quoted(std::span<const BYTE> bytes) {
    std::string text = "\"";
    for (const BYTE byte : bytes) {
        if (byte == '"' || byte == '\\') {
            text += '\\';
            text += static_cast<char>(byte);
        } else if (byte >= 0x20 && byte < 0x7F) {
            text += static_cast<char>(byte);
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            text += escape;
        }
    }
    return text + "\"";
}

std::string Hexadecimal(std::span<const BYTE> bytes) {
    std::string text;
    for (const BYTE byte : bytes) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", byte);
        text += pair;
    }
    return text;
}

std::span<const BYTE> UpToZero(std::span<const BYTE> bytes) {
    std::size_t length = 0;
    while (length < bytes.size() && bytes[length] != 0) {
        ++length;
    }
    return bytes.first(length);
}

std::size_t LengthOf(std::span<const BYTE> record) {
    std::size_t length = 0;
    for (std::size_t at = 4; at-- > 0;) {
        length = length << 8 | record[LengthOffset + at];
    }
    return length;
}

}  // namespace

std::optional<ScanRecord> ReadRecord(std::span<const BYTE> record) {
    if (record.size() != RecordSize || LengthOf(record) > RecordSize - DataOffset) {
        return std::nullopt;
    }
    return ScanRecord{record[0], record[1], UpToZero(record.subspan(UidOffset, DataOffset - UidOffset)),
                      record.subspan(DataOffset, LengthOf(record))};
}

std::string RecordJson(const char* channel, std::span<const BYTE> record) {
    std::string json = std::string("{\"channel\":\"") + channel + "\",";
    if (record.size() != RecordSize) {
        return json + "\"error\":\"a record of " + std::to_string(record.size()) + " bytes\"}";
    }
    const auto scan = ReadRecord(record);
    if (!scan) {
        return json + "\"error\":\"a length of " + std::to_string(LengthOf(record)) + "\"}";
    }
    json += "\"source\":" + std::to_string(scan->Source);
    json += ",\"codeType\":" + Quoted(UpToZero(record.subspan(1, 1)));
    json += ",\"length\":" + std::to_string(scan->Data.size());
    json += ",\"uid\":" + Quoted(scan->Uid);
    json += ",\"text\":" + Quoted(scan->Data);
    json += ",\"hex\":\"" + Hexadecimal(scan->Data) + "\"}";
    return json;
}
