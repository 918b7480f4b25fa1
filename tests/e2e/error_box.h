// What an error box says.
#pragma once

#include <string>

#include "tests/e2e/screen.h"

inline constexpr const char* ErrorBoxTitle = "Error Msg";

// Waits for an error box and tells whether it says this.
bool ErrorBoxSays(TestScreen& screen, const std::string& text);
// Presses the box's button.
void DismissErrorBox(TestScreen& screen);
