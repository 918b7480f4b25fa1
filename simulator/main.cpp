// vantrel-readers: the barcode and RFID readers of a terminal, simulated on pseudo-terminals.

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>

#include "simulator/replay.h"
#include "simulator/terminal.h"

namespace {

int Fail(const std::string& problem) {
    std::fprintf(stderr, "vantrel-readers: %s\n", problem.c_str());
    return 1;
}

// Runs `commands`, then those on standard input, until it or a signal ends the program.
template <typename Readers>
void Serve(readers::EventLoop& loop, readers::Console& console, Readers& terminal, std::istream& commands,
           bool stay, const sigset_t& endings) {
    const int ended = signalfd(-1, &endings, SFD_CLOEXEC | SFD_NONBLOCK);
    loop.Watch(ended, POLLIN, [&loop](short) { loop.Stop(); });
    for (std::string line; std::getline(commands, line);) {
        terminal.Command(line);
    }
    console.Listen([&terminal](std::string_view text) { terminal.Command(text); },
                   [&loop, stay] {
                       if (!stay) {
                           loop.Stop();
                       }
                   });
    loop.Run();
    terminal.Stop();
    console.Flush();
    close(ended);
}

}  // namespace

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

    std::ifstream commands(options.Commands);
    if (!options.Commands.empty() && !commands) {
        return Fail("cannot read " + options.Commands);
    }
    readers::EventLoop loop;
    readers::Console console(loop);
    if (options.Replay.empty()) {
        readers::Terminal terminal(loop, console, options);
        if (!terminal.Start(problem)) {
            return Fail(problem);
        }
        Serve(loop, console, terminal, commands, options.Stay, endings);
        return 0;
    }
    std::ifstream file(options.Replay);
    readers::Trace trace;
    if (!file || !ParseTrace(file, trace, problem)) {
        return Fail(options.Replay + ": " + (file ? problem : "cannot be read"));
    }
    readers::Replay replay(loop, console, options.Terminal, std::move(trace));
    if (!replay.Start(problem)) {
        return Fail(problem);
    }
    Serve(loop, console, replay, commands, options.Stay, endings);
    return replay.Differed() ? 3 : 0;
}
