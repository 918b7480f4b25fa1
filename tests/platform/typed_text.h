// What a scan types, for tests of keyboards.
#pragma once

#include <string>

#include "scan/typing.h"

// Every character that has a key.
inline std::string AllCharacters() {
    std::string all;
    for (int value = 0; value < 256; ++value) {
        if (KeyForByte(static_cast<BYTE>(value)).Key != 0)
            all += static_cast<char>(value);
    }
    return all;
}

inline void TypeText(const std::string& text) {
    TypeBytes({reinterpret_cast<const BYTE*>(text.data()), text.size()});
}
