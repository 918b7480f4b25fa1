#include "scan/key_map.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/keyboard.h"
#include "tests/scan/us_keyboard.h"

namespace {

TEST(KeyMap, EveryPrintableByteComesBackFromAUsKeyboard) {
    const auto& keyboard = UsKeyboard();
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
