// Sockets between the programs of one terminal: one in the folder of windows for each program that has
// windows. No main thread in here; any thread.
#pragma once

#include <poll.h>

#include <string>
#include <vector>

#include "platform/linux/kernel/posix.h"

namespace layer {

// The longest line that is taken from another program.
inline constexpr std::size_t LongestLine = 128 * 1024;

// The folder of windows, where every program has its socket.
std::string WindowsFolder();

// A socket that listens in the folder under that name, -1 on failure; the caller's to close. It appears there
// only when it is ready.
int ListenAs(const std::string& name);
void RemoveSocket(const std::string& name);
// The names of the sockets of all programs in the folder.
std::vector<std::string> ListPrograms();

// Connects without waiting; empty for one that takes no more callers, or is dead: its socket is removed then.
Descriptor ConnectTo(const std::string& name);

// A line on its way out and a line on its way in, on a connection that never blocks.
struct LineConnection {
    Descriptor Socket;
    std::string Out;  // not yet sent
    std::string In;   // received, no line end yet

    // Sends what the other side takes; false when the connection is broken.
    bool Flush();
    enum class Got { Line, Nothing, Closed };
    // Takes the next line, without its end. Closed also for a line that is too long.
    Got TakeLine(std::string& line);
    // Whether the other side has said that nothing more comes; it may still wait for an answer.
    bool Ended() const;
    short Events() const { return static_cast<short>(Out.empty() ? POLLIN : POLLIN | POLLOUT); }
};

}  // namespace layer
