#include "platform/linux/windows/listener.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <list>
#include <mutex>
#include <thread>

#include "platform/linux/kernel/main_thread.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::size_t MostCallers = 64;
constexpr std::chrono::seconds LongestSilence{10};  // of a caller that owes us a line

struct Caller {
    std::uint64_t Number = 0;
    LineConnection Connection;
    SteadyClock::time_point HeardLast;
    bool Handled = false;  // its message is with the main thread
    bool Leaving = false;  // to be closed once its answer is out
};

// What the main thread hands back.
struct Answered {
    std::uint64_t Caller;
    std::string Line;
};

struct Listener {
    std::mutex Mutex;
    std::vector<Answered> Answers;
    std::string Name;
    std::atomic<bool> Stop{false};
    Descriptor Wake;
    Descriptor Socket;
    std::thread Thread;
    // The serving thread's own.
    std::list<Caller> Callers;
    std::uint64_t LastCaller = 0;
};

Listener& TheListener() {
    static auto* listener = new Listener;
    return *listener;
}

void WakeListener() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(TheListener().Wake.Number(), &one, sizeof one);
}

void Answer(std::uint64_t caller, std::string line) {
    Listener& listener = TheListener();
    {
        std::scoped_lock lock(listener.Mutex);
        listener.Answers.push_back({caller, std::move(line)});
    }
    WakeListener();
}

AnswerLine FindHere(const WindowLine& line) {
    AnswerLine answer;
    const auto* className = line.ClassName ? &*line.ClassName : nullptr;
    const auto* title = line.Title ? &*line.Title : nullptr;
    const std::vector<WindowEntry> found = OwnTopLevelWindows(className, title);
    if (!found.empty()) {
        answer.Window = reinterpret_cast<std::uintptr_t>(found.front().Handle);
    }
    return answer;
}

void TakeCallerLine(Caller& caller, const std::string& text) {
    std::string reason;
    const std::optional<WindowLine> line = ReadLine(text, reason);
    if (!line) {
        AnswerLine refusal;
        refusal.Refusal = reason;
        caller.Connection.Out += WriteAnswer(refusal, WindowLine::Kind::Message);
        caller.Leaving = true;
    } else if (line->What == WindowLine::Kind::Find) {
        caller.Connection.Out += WriteAnswer(FindHere(*line), WindowLine::Kind::Find);
    } else {
        caller.Handled = true;
        PostToMainThread([line = *line, number = caller.Number] {
            Answer(number, WriteAnswer(DeliverLine(line), WindowLine::Kind::Message));
        });
    }
}

// False when the caller is to be let go.
bool ServeCaller(Caller& caller, short events) {
    std::string text;
    while (!caller.Handled && !caller.Leaving && (events & (POLLIN | POLLHUP | POLLERR)) != 0) {
        const LineConnection::Got got = caller.Connection.TakeLine(text);
        if (got == LineConnection::Got::Closed) {
            return false;
        }
        if (got == LineConnection::Got::Nothing) {
            break;
        }
        caller.HeardLast = SteadyClock::now();
        TakeCallerLine(caller, text);
    }
    return caller.Connection.Flush() && !(caller.Leaving && caller.Connection.Out.empty()) &&
           (caller.Handled || SteadyClock::now() - caller.HeardLast < LongestSilence);
}

void TakeAnswers(Listener& listener) {
    std::uint64_t count;
    [[maybe_unused]] const auto taken = read(listener.Wake.Number(), &count, sizeof count);
    std::vector<Answered> answers;
    {
        std::scoped_lock lock(listener.Mutex);
        answers.swap(listener.Answers);
    }
    for (const Answered& answer : answers) {
        for (Caller& caller : listener.Callers) {
            if (caller.Number == answer.Caller) {
                caller.Connection.Out += answer.Line;
                caller.Handled = false;
                caller.HeardLast = SteadyClock::now();
            }
        }
    }
}

void TakeCallers(Listener& listener) {
    for (;;) {
        Descriptor socket(accept4(listener.Socket.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket) {
            return;
        }
        if (listener.Callers.size() < MostCallers) {
            Caller& caller = listener.Callers.emplace_back();
            caller.Number = ++listener.LastCaller;
            caller.Connection.Socket = std::move(socket);
            caller.HeardLast = SteadyClock::now();
        }
    }
}

void Serve() {
    Listener& listener = TheListener();
    std::vector<pollfd> files;
    while (!listener.Stop) {
        files.assign({{listener.Wake.Number(), POLLIN, 0}, {listener.Socket.Number(), POLLIN, 0}});
        bool waiting = false;
        for (const Caller& caller : listener.Callers) {
            // One whose message is being handled is not listened to meanwhile.
            const bool silent = caller.Handled && caller.Connection.Out.empty();
            files.push_back({silent ? -1 : caller.Connection.Socket.Number(), caller.Connection.Events(), 0});
            waiting = waiting || !caller.Handled;
        }
        constexpr int second = 1000;
        const int ready = poll(files.data(), files.size(), waiting ? second : -1);
        if (ready < 0 && errno != EINTR) {
            return;
        }
        std::size_t index = 2;
        for (auto caller = listener.Callers.begin(); caller != listener.Callers.end(); ++index) {
            const short events = ready > 0 ? files[index].revents : static_cast<short>(0);
            caller = ServeCaller(*caller, events) ? std::next(caller) : listener.Callers.erase(caller);
        }
        if (ready > 0 && (files[1].revents & POLLIN) != 0) {
            TakeCallers(listener);
        }
        if (ready > 0 && (files[0].revents & POLLIN) != 0) {
            TakeAnswers(listener);
            for (Caller& caller : listener.Callers) {
                ServeCaller(caller, POLLIN);
            }
        }
    }
    // The message that ended the program has its answer too.
    TakeAnswers(listener);
    for (Caller& caller : listener.Callers) {
        caller.Connection.Flush();
    }
    listener.Callers.clear();
}

}  // namespace

bool StartListening() {
    static std::atomic<unsigned> count{0};
    Listener& listener = TheListener();
    if (listener.Thread.joinable()) {
        return true;
    }
    const std::string name = std::to_string(getpid()) + "-" + std::to_string(++count);
    listener.Wake = Descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    listener.Socket = ListenAs(name);
    if (!listener.Wake || !listener.Socket) {
        return false;
    }
    {
        std::scoped_lock lock(listener.Mutex);
        listener.Name = name;
        listener.Answers.clear();
    }
    listener.Stop = false;
    listener.Thread = std::thread(Serve);
    AtEnd(StopListening);
    // A program that ends by itself leaves no socket either.
    static const bool atExit [[maybe_unused]] = std::atexit(StopListening) == 0;
    return true;
}

void StopListening() {
    Listener& listener = TheListener();
    if (!listener.Thread.joinable()) {
        return;
    }
    RemoveSocket(OwnProgram());
    listener.Stop = true;
    WakeListener();
    listener.Thread.join();
    listener.Socket = Descriptor();
    std::scoped_lock lock(listener.Mutex);
    listener.Name.clear();
}

std::string OwnProgram() {
    Listener& listener = TheListener();
    std::scoped_lock lock(listener.Mutex);
    return listener.Name;
}

}  // namespace layer
