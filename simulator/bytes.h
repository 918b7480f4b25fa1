// Bytes as the simulated readers handle them, and the text forms that people type and read.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace readers {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(std::string_view text);
std::string TextOf(std::span<const std::uint8_t> bytes);

// "04 E4 FF", upper-case with blanks; empty for no bytes.
std::string HexText(std::span<const std::uint8_t> bytes);

// Hexadecimal digits, blanks between pairs allowed. Nothing when a digit is wrong or one is left over.
std::optional<Bytes> BytesFromHex(std::string_view text);

// What a command takes as data: "hex:04 E4", "repeat:COUNT:TEXT", "random:COUNT[:SEED]", or plain text.
// Counts go up to one million bytes. Nothing when the form is wrong.
std::optional<Bytes> BytesFromArgument(std::string_view text);

// A number in decimal, or in hexadecimal with 0x in front. Nothing when text is left over or it is too large.
std::optional<std::uint32_t> NumberOf(std::string_view text);

// Blank-separated words.
std::vector<std::string> WordsOf(std::string_view text);

// What follows the first `words` words, without leading blanks.
std::string_view RestAfter(std::string_view text, int words);

}  // namespace readers
