#include "platform/linux/windows/other_programs.h"

#include <sys/socket.h>

#include <algorithm>
#include <map>
#include <mutex>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/window_table.h"

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
    std::string Program;
    LineConnection Connection;
    bool Open = false;
};

// Who was not waited for to the end owes nothing.
void Ask(const std::vector<std::string>& programs, const std::string& line, std::chrono::milliseconds longest,
         const TakeAnswer& take, int alsoUntil) {
    const auto until = SteadyClock::now() + longest;
    std::vector<Asked> asked;
    for (const std::string& program : programs) {
        Asked& each = asked.emplace_back(Asked{program, {ConnectTo(program), line, {}}});
        each.Open = each.Connection.Socket && each.Connection.Flush();
        if (each.Open && each.Connection.Out.empty()) {
            // Nothing more comes: who knows that need not wait for the end of the connection.
            shutdown(each.Connection.Socket.Number(), SHUT_WR);
        }
    }
    std::vector<pollfd> files;
    for (;;) {
        files.assign(1, {alsoUntil, POLLIN, 0});
        bool open = alsoUntil >= 0;
        for (const Asked& each : asked) {
            files.push_back({each.Open ? each.Connection.Socket.Number() : -1, each.Connection.Events(), 0});
            open = open || each.Open;
        }
        // Real time on every clock: the others are processes of their own.
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - SteadyClock::now()).count();
        if (!open || left <= 0) {
            break;
        }
        if (poll(files.data(), files.size(), static_cast<int>(left)) <= 0) {
            continue;
        }
        if (files[0].revents != 0) {
            alsoUntil = -1;
        }
        for (std::size_t i = 0; i < asked.size(); ++i) {
            if (files[i + 1].revents == 0) {
                continue;
            }
            std::string answer;
            const bool whole = asked[i].Connection.Flush();
            const auto got = whole ? asked[i].Connection.TakeLine(answer) : LineConnection::Got::Closed;
            asked[i].Open = got == LineConnection::Got::Nothing;
            if (got == LineConnection::Got::Line && take(asked[i].Program, answer)) {
                return;
            }
        }
    }
    Debts& debts = TheDebts();
    std::scoped_lock lock(debts.Mutex);
    for (Asked& each : asked) {
        if (each.Open) {
            Say(LogPriority::Warning, "the program %s does not answer; it is left out until it does",
                each.Program.c_str());
            debts.Owing.insert_or_assign(each.Program, std::move(each.Connection));
        }
    }
}

}  // namespace

void AskOtherPrograms(const std::string& line, std::chrono::milliseconds longest, const TakeAnswer& take,
                      int alsoUntil) {
    std::vector<std::string> programs = ListPrograms();
    ForgetDead(programs);
    std::erase_if(programs, [own = OwnProgram()](const std::string& program) {
        return program == own || StillOwes(program);
    });
    Ask(programs, line, longest, take, alsoUntil);
}

std::string AskProgram(const std::string& program, const std::string& line,
                       std::chrono::milliseconds longest) {
    std::string answer;
    Ask(
        {program}, line, longest, [&](const auto&, const std::string& got) { return answer = got, true; },
        -1);
    return answer;
}

}  // namespace layer

HWND FindWindowW(LPCWSTR className, LPCWSTR title) {
    layer::ParkAtEnd();
    layer::WindowLine question;
    question.What = layer::WindowLine::Kind::Find;
    if (className != nullptr) {
        question.ClassName = className;
    }
    if (title != nullptr) {
        question.Title = title;
    }
    const auto own = layer::OwnTopLevelWindows(question.ClassName, question.Title);
    if (!own.empty()) {
        return own.front();
    }
    HWND found = nullptr;
    // One that hangs must not hold up who is found.
    const auto take = [&](const std::string& program, const std::string& answer) {
        const std::uint64_t window = layer::ReadAnswer(answer).Window;
        found = window != 0 ? layer::RemoteHandle({program, window}) : nullptr;
        return found != nullptr;
    };
    layer::AskOtherPrograms(layer::WriteLine(question), layer::LongestSearch, take);
    layer::ParkAtEnd();
    return found;
}
