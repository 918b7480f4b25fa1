#include "platform/linux/windows/other_programs.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

#include "platform/linux/kernel/log.h"
#include "platform/linux/kernel/thread.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/program_socket.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/linux/windows/window_table.h"

namespace layer {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::size_t MostCallers = 64;
constexpr std::chrono::milliseconds LongestSilence{10000};  // of a caller that owes us a line
constexpr std::chrono::milliseconds AcceptPause{200};       // after a caller that could not be taken

// A program that calls: its lines are answered one after the other, until it hangs up, keeps silent for too
// long or makes no sense.
struct Caller {
    LineConnection Connection;
    SteadyClock::time_point SilentUntil = SteadyClock::now() + LongestSilence;
    bool Handled = false;  // its message is with the main thread
    bool Muted = false;    // and it has more to say meanwhile, which has to wait
    bool Last = false;     // and that was all it has to say: the main thread lets it go
    bool Refused = false;  // nothing more is listened to

    // Whether a line may be there without a call of the socket's.
    bool HasMore() const { return Connection.Out.empty() && Connection.In.find('\n') != std::string::npos; }
};

// What the serving thread and the main thread, which answers by itself, share under the mutex. It is not held
// while either waits for something.
struct Listener {
    std::mutex Mutex;
    std::string Name;
    std::map<std::uint64_t, Caller> Callers;
    std::uint64_t LastCaller = 0;
    bool Over = false;
    SteadyClock::time_point AcceptAgain{};
    Descriptor Socket;  // the serving thread's own while that runs
    Waker Bell;
    std::thread Thread;  // the main thread's
};

Listener& TheListener() {
    static auto* listener = new Listener;
    return *listener;
}

AnswerLine FindHere(const WindowLine& line) {
    AnswerLine answer;
    // Who looks for a window wants one that will be there.
    if (EndRequested()) {
        return answer;
    }
    const std::vector<HWND> found = OwnTopLevelWindows(line.ClassName, line.Title);
    if (!found.empty()) {
        answer.Window = reinterpret_cast<std::uintptr_t>(found.front());
    }
    return answer;
}

// What could not be sent at once goes when the caller takes it.
void Reply(Caller& caller, const AnswerLine& answer, WindowLine::Kind kind) {
    caller.Connection.Out += WriteAnswer(answer, kind);
    caller.Connection.Flush();
    caller.SilentUntil = SteadyClock::now() + LongestSilence;
}

// Main thread.
void HandleMessage(std::uint64_t number, const WindowLine& line) {
    const AnswerLine answer = DeliverLine(line);
    Listener& listener = TheListener();
    std::scoped_lock lock(listener.Mutex);
    const auto found = listener.Callers.find(number);
    if (found == listener.Callers.end()) {
        return;
    }
    Caller& caller = found->second;
    Reply(caller, answer, WindowLine::Kind::Message);
    caller.Handled = false;
    if (caller.Last && caller.Connection.Out.empty()) {
        listener.Callers.erase(found);
    } else if (caller.Last || caller.Muted || caller.HasMore() || !caller.Connection.Out.empty()) {
        caller.Last = caller.Muted = false;
        listener.Bell.Wake();
    }
}

void TakeLine(std::uint64_t number, Caller& caller, const std::string& text) {
    std::string reason;
    const std::optional<WindowLine> line = ReadLine(text, reason);
    if (!line) {
        AnswerLine refusal;
        refusal.Refusal = reason;
        Reply(caller, refusal, WindowLine::Kind::Message);
        caller.Refused = true;
    } else if (line->What == WindowLine::Kind::Find) {
        Reply(caller, FindHere(*line), WindowLine::Kind::Find);
        caller.Refused = caller.Connection.Ended();
    } else {
        caller.Handled = true;
        caller.Last = caller.Connection.Ended();
        PostToMainThread([number, line = *line] { HandleMessage(number, line); });
    }
}

// Takes what has come from the caller and sends what it takes; false when it is to go.
bool Serve(std::uint64_t number, Caller& caller, bool called) {
    if (caller.Handled) {
        caller.Muted = caller.Muted || called;
        return true;
    }
    if (SteadyClock::now() >= caller.SilentUntil || !caller.Connection.Flush()) {
        return false;
    }
    // An answer that is not taken holds up the next line; the others have their turn after each.
    std::string text;
    if (!caller.Refused && caller.Connection.Out.empty()) {
        switch (caller.Connection.TakeLine(text)) {
            case LineConnection::Got::Line:
                TakeLine(number, caller, text);
                break;
            case LineConnection::Got::Nothing:
                break;
            case LineConnection::Got::Closed:
                return false;
        }
    }
    return !caller.Refused || !caller.Connection.Out.empty();
}

void TakeCallers(Listener& listener) {
    for (;;) {
        Descriptor socket(accept4(listener.Socket.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket) {
            break;
        }
        if (listener.Callers.size() < MostCallers) {
            const auto caller = listener.Callers.try_emplace(++listener.LastCaller).first;
            caller->second.Connection.Socket = std::move(socket);
            if (!Serve(caller->first, caller->second, false)) {
                listener.Callers.erase(caller);
            }
        }
    }
    if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
        Say(LogPriority::Warning, "a program that calls has to wait: %s", std::strerror(errno));
        listener.AcceptAgain = SteadyClock::now() + AcceptPause;
    }
}

// What the serving thread waits for: the bell, a program that calls, and each caller; until when.
SteadyClock::time_point WhatToAwait(const Listener& listener, std::vector<pollfd>& files,
                                    std::vector<std::uint64_t>& callers) {
    const auto now = SteadyClock::now();
    const bool pausing = now < listener.AcceptAgain;
    auto until = pausing ? listener.AcceptAgain : SteadyClock::time_point::max();
    files.assign({{listener.Bell.Number(), POLLIN, 0}, {pausing ? -1 : listener.Socket.Number(), POLLIN, 0}});
    callers.clear();
    for (const auto& [number, caller] : listener.Callers) {
        if (caller.Last) {
            continue;
        }
        // Also of one that is handled: the main thread's answer wakes nobody.
        until = std::min(until, caller.Handled     ? now + LongestSilence
                                : caller.HasMore() ? now
                                                   : caller.SilentUntil);
        const short events = caller.Connection.Out.empty() ? POLLIN : POLLOUT;
        files.push_back({caller.Muted ? -1 : caller.Connection.Socket.Number(), events, 0});
        callers.push_back(number);
    }
    return until;
}

void ServeCallers() {
    Listener& listener = TheListener();
    std::vector<pollfd> files;
    std::vector<std::uint64_t> callers;  // whose the files from the third on are
    std::unique_lock lock(listener.Mutex);
    while (!listener.Over) {
        const auto until = WhatToAwait(listener, files, callers);
        lock.unlock();
        int wait = -1;
        if (until != SteadyClock::time_point::max()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - SteadyClock::now());
            wait = static_cast<int>(std::clamp(left, {}, LongestSilence).count());
        }
        if (poll(files.data(), files.size(), wait) < 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            lock.lock();
            continue;
        }
        lock.lock();
        if (files[0].revents != 0) {
            listener.Bell.Clear();
        }
        for (std::size_t i = 0; i < callers.size(); ++i) {
            const auto caller = listener.Callers.find(callers[i]);
            if (caller != listener.Callers.end() &&
                !Serve(caller->first, caller->second, files[i + 2].revents != 0)) {
                listener.Callers.erase(caller);
            }
        }
        if (files[1].revents != 0) {
            TakeCallers(listener);
        }
    }
}

}  // namespace

bool StartListening() {
    static unsigned count = 0;
    Listener& listener = TheListener();
    if (listener.Thread.joinable()) {
        return true;
    }
    const std::string name = std::to_string(getpid()) + "-" + std::to_string(++count);
    listener.Socket = Descriptor(ListenAs(name));
    if (!listener.Socket) {
        Say(LogPriority::Error, "no socket for other programs' messages in %s: %s", WindowsFolder().c_str(),
            std::strerror(errno));
        return false;
    }
    listener.Over = false;
    listener.Thread = StartHostThread(ServeCallers);
    if (!listener.Thread.joinable()) {
        // Nothing would ever be answered.
        Say(LogPriority::Error, "no thread for other programs' messages");
        RemoveSocket(name);
        listener.Socket.Close();
        return false;
    }
    {
        std::scoped_lock lock(listener.Mutex);
        listener.Name = name;
    }
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
    {
        std::scoped_lock lock(listener.Mutex);
        listener.Over = true;
        listener.Bell.Wake();
    }
    listener.Thread.join();
    std::scoped_lock lock(listener.Mutex);
    listener.Callers.clear();
    listener.Socket.Close();
    listener.Name.clear();
}

std::string OwnProgram() {
    Listener& listener = TheListener();
    std::scoped_lock lock(listener.Mutex);
    return listener.Name;
}

}  // namespace layer
