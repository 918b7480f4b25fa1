// What an application gets from key events when a US keyboard is in force.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/keyboard.h"

// The character of each key, without and with Shift.
inline const std::map<std::pair<int, bool>, char>& UsKeyboard() {
    static const auto keyboard = [] {
        std::map<std::pair<int, bool>, char> gives;
        const auto row = [&gives](const std::vector<int>& keys, const std::string& plain,
                                  const std::string& shifted) {
            for (std::size_t at = 0; at < plain.size(); ++at) {
                gives[{keys[at], false}] = plain[at];
                gives[{keys[at], true}] = shifted[at];
            }
        };
        row({'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'}, "0123456789", ")!@#$%^&*(");
        row({VK_OEM_1, VK_OEM_PLUS, VK_OEM_COMMA, VK_OEM_MINUS, VK_OEM_PERIOD, VK_OEM_2, VK_OEM_3, VK_OEM_4,
             VK_OEM_5, VK_OEM_6, VK_OEM_7},
            ";=,-./`[\\]'", ":+<_>?~{|}\"");
        row({VK_SPACE, VK_RETURN, VK_MULTIPLY, VK_ADD, VK_TAB}, " \r*+\t", " \r*+\t");
        for (int key = 'A'; key <= 'Z'; ++key) {
            gives[{key, false}] = static_cast<char>(key + 32);
            gives[{key, true}] = static_cast<char>(key);
        }
        return gives;
    }();
    return keyboard;
}
