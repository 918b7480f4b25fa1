// Firmware files as text, and what the system makes of them without a decoder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using Octets = std::vector<std::uint8_t>;

// One line with count, checksum and CR LF; type '2' or '3'.
std::string RecordLine(char type, std::uint32_t address, const Octets& data);
inline constexpr std::string_view EndLine = "S70500000000FA\r\n";

// The data frames of a file, as sent, without the end frame.
std::vector<Octets> FramesOf(std::string_view text);
