// vantrel-readers: the barcode and RFID readers of a terminal, simulated on pseudo-terminals.

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>

#include "simulator/terminal.h"

int main(int count, char** arguments) {
    readers::Options options;
    std::string problem;
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() == 1 && words.front() == "--help") {
        std::fputs(readers::Usage, stdout);
        return 0;
    }
    if (!readers::ParseOptions(words, options, problem)) {
        std::fprintf(stderr, "vantrel-readers: %s\n%s", problem.c_str(), readers::Usage);
        return 2;
    }

    // Signals that end the program arrive as bytes in the loop, so that the links always go away.
    sigset_t endings;
    sigemptyset(&endings);
    for (int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&endings, signal);
    }
    sigprocmask(SIG_BLOCK, &endings, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    readers::EventLoop loop;
    readers::Console console(loop);
    readers::Terminal terminal(loop, console, options);
    if (!terminal.Start(problem)) {
        std::fprintf(stderr, "vantrel-readers: %s\n", problem.c_str());
        return 1;
    }
    const int ended = signalfd(-1, &endings, SFD_CLOEXEC | SFD_NONBLOCK);
    loop.Watch(ended, POLLIN, [&loop](short) { loop.Stop(); });

    const auto command = [&terminal](std::string_view text) { terminal.Command(text); };
    const auto end = [&] {
        if (!options.Stay) {
            loop.Stop();
        }
    };
    if (!options.Commands.empty()) {
        std::ifstream file(options.Commands);
        if (!file) {
            std::fprintf(stderr, "vantrel-readers: cannot read %s\n", options.Commands.c_str());
            return 1;
        }
        for (std::string line; std::getline(file, line);) {
            terminal.Command(line);
        }
    }
    console.Listen(command, end);
    loop.Run();
    terminal.Stop();
    console.Flush();
    close(ended);
    return 0;
}
