#include "simulator/console.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace readers {
namespace {

constexpr std::size_t LargestOutput = 16u << 20;
constexpr std::size_t LargestCommand = 4u << 20;

}  // namespace

Console::Console(EventLoop& loop) : Loop(loop) {}

void Console::Print(std::string_view line) {
    if (OutputGone) {
        return;
    }
    if (Output.size() + line.size() > LargestOutput) {
        OutputLost = true;
        return;
    }
    if (OutputLost) {
        OutputLost = false;
        Output += "event output-lost\n";
    }
    // What came over the wire must not break a line, or the terminal that shows it.
    for (char c : line) {
        if (c >= ' ' && c <= '~') {
            Output += c;
        } else {
            constexpr std::string_view Digits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            Output.append("\\x").append(1, Digits[byte >> 4]).append(1, Digits[byte & 15]);
        }
    }
    Output += '\n';
    WriteSome();
}

void Console::Event(std::string_view name, std::string_view port, std::string_view details) {
    std::string line = "event ";
    line.append(name).append(" ").append(port);
    if (!details.empty()) {
        line.append(" ").append(details);
    }
    Print(line);
}

// A pipe that poll calls writable takes PIPE_BUF bytes without blocking; more than that might wait.
void Console::WriteSome() {
    while (!Output.empty() && !OutputGone) {
        pollfd out{STDOUT_FILENO, POLLOUT, 0};
        if (poll(&out, 1, 0) <= 0 || (out.revents & (POLLOUT | POLLERR | POLLHUP)) == 0) {
            Loop.Watch(STDOUT_FILENO, POLLOUT, [this](short) { WriteSome(); });
            return;
        }
        const ssize_t written =
            write(STDOUT_FILENO, Output.data(), std::min<std::size_t>(Output.size(), PIPE_BUF));
        if (written > 0) {
            Output.erase(0, static_cast<std::size_t>(written));
        } else if (errno != EINTR && errno != EAGAIN) {
            OutputGone = true;
        }
    }
    Loop.Unwatch(STDOUT_FILENO);
}

void Console::Flush() {
    const auto until = Clock::now() + std::chrono::seconds(1);
    while (!Output.empty() && !OutputGone && Clock::now() < until) {
        WriteSome();
        pollfd out{STDOUT_FILENO, POLLOUT, 0};
        poll(&out, 1, 50);
    }
}

void Console::Listen(std::function<void(std::string_view)> command, std::function<void()> end) {
    OnCommand = std::move(command);
    OnEnd = std::move(end);
    Loop.Watch(STDIN_FILENO, POLLIN, [this](short) { ReadInput(); });
}

void Console::ReadInput() {
    std::array<char, 4096> chunk;
    const ssize_t got = read(STDIN_FILENO, chunk.data(), chunk.size());
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (got <= 0) {
        Loop.Unwatch(STDIN_FILENO);
        Ended = true;
        if (!Input.empty()) {
            Commands.push_back(std::move(Input));
        }
        RunCommands();
        return;
    }
    Input.append(chunk.data(), static_cast<std::size_t>(got));
    std::size_t start = 0;
    for (std::size_t end; (end = Input.find('\n', start)) != std::string::npos; start = end + 1) {
        Commands.push_back(Input.substr(start, end - start));
    }
    Input.erase(0, start);
    if (Input.size() > LargestCommand) {
        Input.clear();
        Print("error command too long");
    }
    RunCommands();
}

void Console::RunCommands() {
    while (!Paused && !Commands.empty()) {
        const std::string line = std::move(Commands.front());
        Commands.pop_front();
        OnCommand(line);
    }
    if (Ended && !Paused && OnEnd) {
        const auto end = std::move(OnEnd);
        OnEnd = nullptr;
        end();
    }
}

void Console::Pause(std::chrono::milliseconds time) {
    Paused = true;
    Loop.At(Clock::now() + time, [this] {
        Paused = false;
        RunCommands();
    });
}

}  // namespace readers
