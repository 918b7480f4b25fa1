#include "tests/e2e/program.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "tests/e2e/waiting.h"
#include "tests/e2e/wine_screen.h"
#include "tests/support/temporary_terminal.h"

namespace {

// What runs a program: one of the project's, on the platform under test (the readers always on this one), or
// one of the machine.
std::vector<std::string> CommandOf(const std::string& name, std::vector<std::string>& environment) {
    if (OnWine() && (name == "vantrel" || name == "vantrel-watch" || name == "vantrel-trigger")) {
        // A test may name another one behind it.
        environment.insert(environment.begin(), "VANTREL_TERMINAL=" + WineTerminal());
        return WineCommand(name);
    }
    const std::string own = std::string(VANTREL_PROGRAMS) + "/" + name;
    return {access(own.c_str(), X_OK) == 0 ? own : name};
}

}  // namespace

std::unique_ptr<ChildProcess> StartProgram(const std::string& name, const std::vector<std::string>& arguments,
                                           const std::vector<std::string>& environment) {
    std::vector<std::string> command = {"setpriv", "--pdeathsig", "KILL", "--"};
    std::vector<std::string> variables = environment;
    const auto program = CommandOf(name, variables);
    command.insert(command.end(), program.begin(), program.end());
    command.insert(command.end(), arguments.begin(), arguments.end());
    return std::make_unique<ChildProcess>(command, variables);
}

int RunProgram(const std::string& name, const std::vector<std::string>& arguments, std::string* output) {
    const auto process = StartProgram(name, arguments);
    process->CloseInput();
    while (auto line = process->ReadLine(20000)) {
        if (output != nullptr) {
            *output += *line + "\n";
        }
    }
    return process->Wait(1000).value_or(-1);
}

Vantrel::Vantrel(const std::vector<std::string>& environment, const std::vector<std::string>& arguments) {
    std::vector<std::string> variables = {"QT_QPA_PLATFORM=xcb", "VANTREL_KEYBOARD=xtest"};
    // The last of two settings of one variable counts.
    variables.insert(variables.end(), environment.begin(), environment.end());
    process_ = StartProgram("vantrel", arguments, variables);
}

bool Vantrel::IsThere(int milliseconds) const {
    return Within(milliseconds, [] { return Trigger({"up"}); });
}

void Vantrel::Signal(int number) {
    if (OnWine() && number == SIGTERM) {
        WineSession::Current().Ask("close");
    } else {
        process_->Signal(number);
    }
}

bool Vantrel::End() {
    Signal(SIGTERM);
    return Ended() == 0;
}

bool Trigger(const std::vector<std::string>& words) {
    if (OnWine()) {
        std::string command = "trigger";
        for (const std::string& word : words) {
            command += " " + word;
        }
        const auto answer = WineSession::Current().Ask(command);
        if (answer == std::vector<std::string>{"trigger late"}) {
            std::fputs("the program has not answered the trigger in 5 s\n", stderr);
        }
        return answer != std::vector<std::string>{"trigger nobody there"};
    }
    // Standard error is left out: a test may ask before the program is there.
    std::vector<std::string> command = {"-c", "exec \"$0\" \"$@\" 2>/dev/null",
                                        VANTREL_PROGRAMS "/vantrel-trigger"};
    command.insert(command.end(), words.begin(), words.end());
    const auto ended = StartProgram("/bin/sh", command)->Wait(20000);
    if (!ended) {
        std::fputs("vantrel-trigger has not ended in 20 s\n", stderr);
    }
    return ended == 0;
}

long ProcessorTicks(pid_t process) {
    const std::string text = ReadWholeFile("/proc/" + std::to_string(process) + "/stat");
    long user = 0, system = 0;
    // Behind the name, which ends with the last bracket; the 12th and 13th fields from there.
    const char* const fields = text.c_str() + text.rfind(')') + 1;
    std::sscanf(fields, " %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %ld %ld", &user, &system);
    return user + system;
}
