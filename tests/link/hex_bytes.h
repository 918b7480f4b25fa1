// Bytes from hexadecimal text with blanks between, and as such text without; independent of the system's own
// converter.
#pragma once

#include <cstdio>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "platform/base.h"

inline std::vector<BYTE> Bytes(const std::string& hex) {
    std::istringstream words(hex);
    std::vector<BYTE> bytes;
    for (unsigned value; words >> std::hex >> value;)
        bytes.push_back(static_cast<BYTE>(value));
    return bytes;
}

inline std::string Hex(std::span<const BYTE> bytes) {
    std::string text;
    for (const BYTE value : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", value);
        text += digits;
    }
    return text;
}
