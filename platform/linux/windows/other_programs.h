// This program among the others of its terminal: messages to their windows, its socket for theirs, and the
// numbers of registered messages, which are the same for one name in all of them. Any thread but where it is
// said; the main thread is not needed.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "platform/linux/windows/window_message.h"
#include "platform/window.h"

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

// Opens the socket and serves it on a thread of its own until the end of the program; once. Questions are
// answered even while the main thread is busy; messages are handled on the main thread. False when there can
// be no socket.
bool StartListening();
void StopListening();
// The name of this program's socket, or empty while there is none.
std::string OwnProgram();
// Gives the message to the windows of this program that the line names. Main thread.
AnswerLine DeliverLine(const WindowLine& line);

inline constexpr UINT FirstRegistered = 0xC000;
inline constexpr UINT LastRegistered = 0xFFFF;

// The number of a name that this program has registered, or 0.
UINT RegisteredNumber(std::u16string_view name);
// The name of a number that this program has registered, or empty.
std::u16string RegisteredName(UINT number);
// Forgets what was registered; for tests, as another program would begin.
void ForgetRegisteredMessages();

}  // namespace layer
