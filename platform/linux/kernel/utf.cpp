#include "platform/linux/kernel/terminal.h"

namespace layer {

namespace {

constexpr char32_t Replacement = 0xFFFD;

bool IsHigh(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLow(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void PutUtf8(std::string& to, char32_t character) {
    const auto put = [&to](char32_t byte) { to.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
        return;
    }
    if (character < 0x800) {
        put(0xC0 | (character >> 6));
    } else if (character < 0x10000) {
        put(0xE0 | (character >> 12));
        put(0x80 | ((character >> 6) & 0x3F));
    } else {
        put(0xF0 | (character >> 18));
        put(0x80 | ((character >> 12) & 0x3F));
        put(0x80 | ((character >> 6) & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

// Takes one character off the front; a byte that starts none is taken alone.
char32_t TakeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    std::size_t length = 1;
    char32_t character = first;
    char32_t least = 0;
    if (first >= 0xF0 && first < 0xF8) {
        length = 4, character = first & 0x07, least = 0x10000;
    } else if (first >= 0xE0 && first < 0xF0) {
        length = 3, character = first & 0x0F, least = 0x800;
    } else if (first >= 0xC0 && first < 0xE0) {
        length = 2, character = first & 0x1F, least = 0x80;
    } else if (first >= 0x80) {
        character = Replacement;
    }
    bool good = length <= text.size();
    for (std::size_t i = 1; good && i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        good = (next & 0xC0) == 0x80;
        character = (character << 6) | (next & 0x3F);
    }
    if (length > 1) {
        good = good && character >= least && character <= 0x10FFFF && !IsHigh(character) && !IsLow(character);
    }
    text.remove_prefix(good ? length : 1);
    return good ? character : Replacement;
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
    std::string to;
    to.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (IsHigh(character) && i + 1 < text.size() && IsLow(text[i + 1])) {
            character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00u);
        } else if (IsHigh(character) || IsLow(character)) {
            character = Replacement;
        }
        PutUtf8(to, character);
    }
    return to;
}

std::u16string FromUtf8(std::string_view text) {
    std::u16string to;
    to.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        if (character < 0x10000) {
            to.push_back(static_cast<char16_t>(character));
        } else {
            to.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
            to.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
        }
    }
    return to;
}

}  // namespace layer
