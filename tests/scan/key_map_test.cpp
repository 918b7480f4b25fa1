#include "scan/key_map.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "platform/keyboard.h"

namespace {

// A US keyboard, row by row: what each key gives without and with Shift.
std::map<std::pair<int, bool>, char> Keyboard() {
    std::map<std::pair<int, bool>, char> gives;
    const std::string digits = "0123456789", shifted = ")!@#$%^&*(";
    for (std::size_t at = 0; at < digits.size(); ++at) {
        gives[{'0' + static_cast<int>(at), false}] = digits[at];
        gives[{'0' + static_cast<int>(at), true}] = shifted[at];
    }
    for (int key = 'A'; key <= 'Z'; ++key) {
        gives[{key, false}] = static_cast<char>(key + 32);
        gives[{key, true}] = static_cast<char>(key);
    }
    const int keys[] = {VK_OEM_1, VK_OEM_PLUS, VK_OEM_COMMA, VK_OEM_MINUS, VK_OEM_PERIOD, VK_OEM_2,
                        VK_OEM_3, VK_OEM_4,    VK_OEM_5,     VK_OEM_6,     VK_OEM_7};
    const std::string plain = ";=,-./`[\\]'", with = ":+<_>?~{|}\"";
    for (std::size_t at = 0; at < plain.size(); ++at) {
        gives[{keys[at], false}] = plain[at];
        gives[{keys[at], true}] = with[at];
    }
    for (const bool shift : {false, true}) {
        gives[{VK_SPACE, shift}] = ' ';
        gives[{VK_RETURN, shift}] = '\r';
        gives[{VK_MULTIPLY, shift}] = '*';
        gives[{VK_ADD, shift}] = '+';
    }
    return gives;
}

TEST(KeyMap, EveryPrintableByteComesBackFromAUsKeyboard) {
    const auto keyboard = Keyboard();
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const KeyStroke stroke = KeyForByte(static_cast<BYTE>(byte));
        if ((byte >= 0x20 && byte <= 0x7E) || byte == '\r') {
            const auto found = keyboard.find({stroke.Key, stroke.Shift});
            ASSERT_NE(found, keyboard.end());
            EXPECT_EQ(found->second, static_cast<char>(byte));
        } else {
            EXPECT_EQ(stroke.Key, 0);
        }
    }
}

TEST(KeyMap, KeysWithAPlaceOfTheirOwnNeedNoShift) {
    for (const char byte : std::string(" \r*+=8az")) {
        EXPECT_FALSE(KeyForByte(static_cast<BYTE>(byte)).Shift) << byte;
    }
    EXPECT_EQ(KeyForByte('*').Key, VK_MULTIPLY);
    EXPECT_EQ(KeyForByte('+').Key, VK_ADD);
}

}  // namespace
