// Messages to windows of other programs. Any thread; the main thread is not needed.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/linux/windows/window_message.h"

namespace layer {

// How long a message to other programs waits for all answers together, and how long a search does. Tests
// shorten them.
inline std::chrono::milliseconds LongestSend{5000};
inline std::chrono::milliseconds LongestSearch{2000};

// Called with the name of a program and its answer; true makes those that have not come needless.
using TakeAnswer = std::function<bool(const std::string& program, const std::string& line)>;

// Sends the line to all other programs at once and takes their answers until the time is up. A program that
// has not answered an earlier line is left out until it has. With `alsoUntil`, a descriptor, it waits as well
// until that can be read.
void AskOtherPrograms(const std::string& line, std::chrono::milliseconds longest, const TakeAnswer& take,
                      int alsoUntil = -1);
// Sends the line to one program, whatever it owes; its answer, or empty.
std::string AskProgram(const std::string& program, const std::string& line,
                       std::chrono::milliseconds longest);

}  // namespace layer
