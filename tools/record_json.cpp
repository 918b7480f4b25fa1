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

}  // namespace

std::string RecordJson(const char* channel, std::span<const BYTE> record) {
    std::string json = std::string("{\"channel\":\"") + channel + "\",";
    if (record.size() != RecordSize) {
        return json + "\"error\":\"a record of " + std::to_string(record.size()) + " bytes\"}";
    }
    std::size_t length = 0;
    for (std::size_t at = 4; at-- > 0;) {
        length = length << 8 | record[LengthOffset + at];
    }
    if (length > RecordSize - DataOffset) {
        return json + "\"error\":\"a length of " + std::to_string(length) + "\"}";
    }
    const auto data = record.subspan(DataOffset, length);
    json += "\"source\":" + std::to_string(record[0]);
    json += ",\"codeType\":" + Quoted(UpToZero(record.subspan(1, 1)));
    json += ",\"length\":" + std::to_string(length);
    json += ",\"uid\":" + Quoted(UpToZero(record.subspan(UidOffset, DataOffset - UidOffset)));
    json += ",\"text\":" + Quoted(data);
    json += ",\"hex\":\"" + Hexadecimal(data) + "\"}";
    return json;
}
