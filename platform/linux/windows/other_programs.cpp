#include "platform/linux/windows/other_programs.h"
#include "platform/linux/kernel/log.h"

#include <map>
#include <mutex>

#include "platform/linux/windows/listener.h"
#include "platform/linux/windows/program_socket.h"

namespace layer {

namespace {

using SteadyClock = std::chrono::steady_clock;

// Programs that have not answered yet, by the name of their socket, with the connection the answer is to come
// on.
struct Debts {
    std::mutex Mutex;
    std::map<std::string, LineConnection> Owing;
};

Debts& TheDebts() {
    static auto* debts = new Debts;
    return *debts;
}

bool StillOwes(const std::string& program) {
    Debts& debts = TheDebts();
    std::scoped_lock lock(debts.Mutex);
    const auto found = debts.Owing.find(program);
    if (found == debts.Owing.end()) {
        return false;
    }
    std::string line;
    if (found->second.Flush() && found->second.TakeLine(line) == LineConnection::Got::Nothing) {
        return true;
    }
    debts.Owing.erase(found);
    return false;
}

void ForgetDead(const std::vector<std::string>& programs) {
    Debts& debts = TheDebts();
    std::scoped_lock lock(debts.Mutex);
    std::erase_if(debts.Owing, [&](const auto& debt) {
        return std::find(programs.begin(), programs.end(), debt.first) == programs.end();
    });
}

struct Asked {
    ProgramAnswer Answer;
    LineConnection Connection;
    bool Open = false;

    void Serve(short events) {
        std::string line;
        if (!Connection.Flush()) {
            Open = false;
        } else if ((events & (POLLIN | POLLHUP | POLLERR)) != 0) {
            const LineConnection::Got got = Connection.TakeLine(line);
            if (got == LineConnection::Got::Line) {
                Answer.Line = line;
            }
            Open = got == LineConnection::Got::Nothing;
        }
    }
};

// False when the first answer that was enough ended the asking.
bool AskAll(std::vector<Asked>& asked, const std::string& line, SteadyClock::time_point until, int alsoUntil,
            EnoughAnswer enough) {
    for (Asked& program : asked) {
        program.Open = ConnectTo(program.Answer.Program, program.Connection.Socket) == Reached::Yes;
        program.Connection.Out = line;
        program.Open = program.Open && program.Connection.Flush();
    }
    std::vector<pollfd> files;
    for (;;) {
        files.assign(1, {alsoUntil, POLLIN, 0});
        bool open = alsoUntil >= 0;
        for (const Asked& program : asked) {
            files.push_back(
                {program.Open ? program.Connection.Socket.Number() : -1, program.Connection.Events(), 0});
            open = open || program.Open;
        }
        // Real time on every clock: the others are processes of their own.
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - SteadyClock::now()).count();
        if (!open || left <= 0) {
            return true;
        }
        if (poll(files.data(), files.size(), static_cast<int>(left)) <= 0) {
            continue;
        }
        if (files[0].revents != 0) {
            alsoUntil = -1;
        }
        for (std::size_t i = 0; i < asked.size(); ++i) {
            if (files[i + 1].revents != 0) {
                asked[i].Serve(files[i + 1].revents);
            }
            if (enough != nullptr && asked[i].Answer.Line && enough(*asked[i].Answer.Line)) {
                return false;
            }
        }
    }
}

void NoteDebts(std::vector<Asked>& asked) {
    Debts& debts = TheDebts();
    std::scoped_lock lock(debts.Mutex);
    for (Asked& program : asked) {
        if (program.Open) {
            Say(LogPriority::Warning, "the program %s does not answer; it is left out until it does",
                program.Answer.Program.c_str());
            debts.Owing.insert_or_assign(program.Answer.Program, std::move(program.Connection));
        }
    }
}

std::vector<ProgramAnswer> Ask(const std::vector<std::string>& programs, const std::string& line,
                               std::chrono::milliseconds longest, int alsoUntil, EnoughAnswer enough) {
    const auto until = SteadyClock::now() + longest;
    std::vector<Asked> asked(programs.size());
    for (std::size_t i = 0; i < programs.size(); ++i) {
        asked[i].Answer.Program = programs[i];
    }
    // Who was not waited for to the end owes nothing.
    if (AskAll(asked, line, until, alsoUntil, enough)) {
        NoteDebts(asked);
    }
    std::vector<ProgramAnswer> answers;
    for (Asked& program : asked) {
        answers.push_back(std::move(program.Answer));
    }
    return answers;
}

}  // namespace

std::vector<ProgramAnswer> AskOtherPrograms(const std::string& line, std::chrono::milliseconds longest,
                                            int alsoUntil, EnoughAnswer enough) {
    std::vector<std::string> programs = ListPrograms();
    ForgetDead(programs);
    std::erase_if(programs, [own = OwnProgram()](const std::string& program) {
        return program == own || StillOwes(program);
    });
    return Ask(programs, line, longest, alsoUntil, enough);
}

std::optional<std::string> AskProgram(const std::string& program, const std::string& line,
                                      std::chrono::milliseconds longest) {
    return Ask({program}, line, longest, -1, nullptr).front().Line;
}

HWND FindOtherWindow(const std::u16string* className, const std::u16string* title) {
    WindowLine question;
    question.What = WindowLine::Kind::Find;
    if (className != nullptr) {
        question.ClassName = *className;
    }
    if (title != nullptr) {
        question.Title = *title;
    }
    // One that hangs must not hold up who is found.
    const EnoughAnswer found = [](const std::string& answer) { return ReadAnswer(answer).Window != 0; };
    for (const ProgramAnswer& answer : AskOtherPrograms(WriteLine(question), LongestSearch, -1, found)) {
        const std::uint64_t window = answer.Line ? ReadAnswer(*answer.Line).Window : 0;
        if (window != 0) {
            return RemoteHandle({answer.Program, window});
        }
    }
    return nullptr;
}

}  // namespace layer
