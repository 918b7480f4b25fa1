// Messages to windows of other programs. Any thread; the main thread is not needed.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/windows/window_message.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

// How long a message to other programs waits for all answers together, and how long a search does. Tests
// shorten them.
inline std::chrono::milliseconds LongestSend{5000};
inline std::chrono::milliseconds LongestSearch{2000};

struct ProgramAnswer {
    std::string Program;
    std::optional<std::string> Line;  // none: it did not answer
};

// Whether an answer makes the others needless.
using EnoughAnswer = bool (*)(const std::string& line);

// Sends the line to all other programs at once and takes their answers until the time is up, or until one is
// enough. A program that
// has not answered an earlier line is left out until it has. With `alsoUntil`, a descriptor, it waits as well
// until that can be read.
std::vector<ProgramAnswer> AskOtherPrograms(const std::string& line, std::chrono::milliseconds longest,
                                            int alsoUntil = -1, EnoughAnswer enough = nullptr);
// Sends the line to one program, whatever it owes.
std::optional<std::string> AskProgram(const std::string& program, const std::string& line,
                                      std::chrono::milliseconds longest);

// A window of another program that fits both names (null fits all); null when there is none.
HWND FindOtherWindow(const std::u16string* className, const std::u16string* title);

}  // namespace layer
