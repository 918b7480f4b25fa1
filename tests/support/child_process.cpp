#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

void Check(bool good, const char* what) {
    if (!good) {
        std::perror(what);
        std::abort();
    }
}

}  // namespace

int LeftUntil(Moment moment) {
    const auto left = moment - std::chrono::steady_clock::now();
    return std::max(0, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
}

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::vector<std::string>& environment) {
    // A child that has ended must show as a failed write, not end the test.
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    Check(pipe2(in.data(), O_CLOEXEC) == 0 && pipe2(out.data(), O_CLOEXEC) == 0, "pipe2");

    std::vector<std::string> words = command;
    if (!environment.empty()) {
        words.insert(words.begin(), environment.begin(), environment.end());
        words.insert(words.begin(), "env");
    }
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    const int failed = posix_spawnp(&id_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    errno = failed;
    Check(failed == 0, arguments[0]);
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    output_ = out[0];
}

ChildProcess::~ChildProcess() {
    CloseInput();
    if (!result_) {
        Signal(SIGKILL);
        waitpid(id_, nullptr, 0);
    }
    close(output_);
}

void ChildProcess::WriteLine(const std::string& line) {
    const std::string whole = line + "\n";
    std::size_t done = 0;
    while (done < whole.size()) {
        const ssize_t count = write(input_, whole.data() + done, whole.size() - done);
        if (count < 0 && errno != EINTR) {
            return;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

void ChildProcess::CloseInput() {
    if (input_ >= 0) {
        close(input_);
        input_ = -1;
    }
}

std::optional<std::string> ChildProcess::ReadLine(int milliseconds) {
    const Moment deadline = In(milliseconds);
    for (;;) {
        const std::size_t end = pending_.find('\n');
        if (end != std::string::npos) {
            std::string line = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            // Windows programs end a line with two characters.
            if (line.ends_with('\r')) {
                line.pop_back();
            }
            return line;
        }
        pollfd ready{output_, POLLIN, 0};
        if (poll(&ready, 1, LeftUntil(deadline)) <= 0) {
            if (LeftUntil(deadline) == 0) {
                return std::nullopt;
            }
            continue;
        }
        std::array<char, 4096> chunk{};
        const ssize_t count = read(output_, chunk.data(), chunk.size());
        if (count > 0) {
            pending_.append(chunk.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return std::nullopt;
        }
    }
}

void ChildProcess::Signal(int number) {
    if (!result_) {
        kill(id_, number);
    }
}

std::optional<int> ChildProcess::Wait(int milliseconds) {
    const Moment deadline = In(milliseconds);
    while (!result_) {
        int status = 0;
        if (waitpid(id_, &status, WNOHANG) == id_) {
            result_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        } else if (LeftUntil(deadline) == 0) {
            return std::nullopt;
        } else {
            const timespec pause{0, 2'000'000};
            nanosleep(&pause, nullptr);
        }
    }
    return result_;
}
