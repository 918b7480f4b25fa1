// What an error box says. Its text is a picture on the screen: it is compared with that of a second box,
// which the test program shows in another role, with the text that is expected.
#pragma once

#include <string>

#include "tests/e2e/screen.h"

inline constexpr const char* ErrorBoxTitle = "Error Msg";
inline constexpr const char* ShowBoxRole = "--show-box";

// The test program in that role: shows the box and waits to be ended.
int ShowModelBox(const char* text);

// Waits for an error box and tells whether it says this.
bool ErrorBoxSays(TestScreen& screen, const std::string& text);
// Presses the box's button.
void DismissErrorBox(TestScreen& screen);
