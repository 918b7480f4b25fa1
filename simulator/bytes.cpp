#include "simulator/bytes.h"

#include <charconv>
#include <random>

namespace readers {
namespace {

constexpr std::uint32_t LargestCount = 1'000'000;

int DigitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

}  // namespace

Bytes BytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

std::string TextOf(std::span<const std::uint8_t> bytes) {
    return std::string(bytes.begin(), bytes.end());
}

std::string HexText(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 3);
    for (std::uint8_t byte : bytes) {
        if (!text.empty()) {
            text += ' ';
        }
        text += Digits[byte >> 4];
        text += Digits[byte & 15];
    }
    return text;
}

std::optional<Bytes> BytesFromHex(std::string_view text) {
    Bytes bytes;
    int high = -1;
    for (char c : text) {
        if (IsBlank(c) && high < 0) {
            continue;
        }
        const int value = DigitValue(c);
        if (value < 0) {
            return std::nullopt;
        }
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high << 4 | value));
            high = -1;
        }
    }
    if (high >= 0) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<Bytes> BytesFromArgument(std::string_view text) {
    if (text.starts_with("hex:")) {
        return BytesFromHex(text.substr(4));
    }
    const bool repeat = text.starts_with("repeat:");
    if (!repeat && !text.starts_with("random:")) {
        return BytesOf(text);
    }
    const std::string_view form = text.substr(7);
    const std::size_t colon = form.find(':');
    const auto count = NumberOf(form.substr(0, colon));
    const std::string_view tail = colon == std::string_view::npos ? "" : form.substr(colon + 1);
    if (!count || *count > LargestCount || (repeat && tail.empty())) {
        return std::nullopt;
    }
    Bytes bytes;
    if (repeat) {
        for (std::uint32_t i = 0; i < *count; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(tail[i % tail.size()]));
        }
        return bytes;
    }
    const auto seed = tail.empty() ? std::optional<std::uint32_t>(1) : NumberOf(tail);
    if (!seed) {
        return std::nullopt;
    }
    std::mt19937 generator(*seed);
    for (std::uint32_t i = 0; i < *count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(generator() >> 24));
    }
    return bytes;
}

std::optional<std::uint32_t> NumberOf(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::vector<std::string> WordsOf(std::string_view text) {
    std::vector<std::string> words;
    std::size_t at = 0;
    while (at < text.size()) {
        if (IsBlank(text[at])) {
            ++at;
            continue;
        }
        const std::size_t start = at;
        while (at < text.size() && !IsBlank(text[at])) {
            ++at;
        }
        words.emplace_back(text.substr(start, at - start));
    }
    return words;
}

std::string_view RestAfter(std::string_view text, int words) {
    auto skip = [&text](bool blank) {
        while (!text.empty() && IsBlank(text.front()) == blank) {
            text.remove_prefix(1);
        }
    };
    skip(true);
    for (int i = 0; i < words; ++i) {
        skip(false);
        skip(true);
    }
    return text;
}

}  // namespace readers
