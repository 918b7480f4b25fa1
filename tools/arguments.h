#pragma once

#include <charconv>
#include <string_view>

#include "platform/base.h"

// Reads a whole decimal number from 0 to the maximum; false, with nothing written, for anything else.
inline bool ReadNumberArgument(std::string_view text, DWORD maximum, DWORD& number) {
    DWORD value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value > maximum) {
        return false;
    }
    number = value;
    return true;
}
