// This program's socket: other programs ask it for its windows and send them messages.
#pragma once

#include <string>

#include "platform/linux/windows/window_message.h"

namespace layer {

// Opens the socket and serves it on a thread of its own until the end of the program; once. Questions are
// answered even while the main thread is busy; messages are handled on the main thread. False when there can
// be no socket.
bool StartListening();
void StopListening();
// The name of this program's socket, or empty while there is none.
std::string OwnProgram();

// Gives the message to the windows of this program that the line names. Main thread.
AnswerLine DeliverLine(const WindowLine& line);

}  // namespace layer
