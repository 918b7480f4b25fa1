// Bytes written as hexadecimal text, blanks allowed, and back; independent of the system's own converter.
#pragma once

#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base.h"

inline std::vector<BYTE> Bytes(std::string_view hex) {
    std::vector<BYTE> bytes;
    std::string pair;
    for (const char character : hex) {
        if (character == ' ')
            continue;
        pair += character;
        if (pair.size() == 2) {
            bytes.push_back(static_cast<BYTE>(std::stoi(pair, nullptr, 16)));
            pair.clear();
        }
    }
    return bytes;
}

inline std::vector<BYTE> TextBytes(std::string_view text) {
    return {text.begin(), text.end()};
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
