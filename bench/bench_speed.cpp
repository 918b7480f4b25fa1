// The program beside what people use today, a script of pyserial and xdotool: bench_speed [SCANS]. One
// reader, one X server, one client in front for both. Prints median and 99th percentile. Run it on a machine
// that has nothing else to do; the processor's figures hold on any.
#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>

#include "bench/laser.h"
#include "platform/linux/kernel/posix.h"
#include "tests/platform/x_client.h"
#include "tests/support/child_process.h"

namespace {

using Clock = std::chrono::steady_clock;
using layer::Descriptor;

constexpr char Label[] = "4006381333931";  // and the return: 14 characters
constexpr std::size_t Characters = 14;
constexpr int DecodeTime = 60;
constexpr int Starts = 15;
constexpr int IdleSeconds = 60;

double Since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Figures {
    std::vector<double> FirstKey, Typed, Start;  // milliseconds
    double Processor = 0;                        // milliseconds a scan
    double SleepsOfScan = 0;                     // of all threads
    double PrivateMegabytes = 0, WakeUps = 0;    // a second
};

// What the machine makes of the waits of one scan where nothing but the waits is done.
struct Floor {
    std::vector<double> Late;  // milliseconds, of the three together
    double Processor = 0;      // milliseconds to sleep once and wake up
};

double At(std::vector<double> values, std::size_t percent) {
    std::sort(values.begin(), values.end());
    return values.empty() ? -1 : values[std::min(values.size() - 1, values.size() * percent / 100)];
}

// Of a process and those of its children that have ended, in milliseconds.
double ProcessorTime(pid_t process) {
    double own = 0;
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(process, &clock) == 0 && clock_gettime(clock, &time) == 0) {
        own = static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string word;
    long children = 0;
    for (int field = 1; file >> word && field <= 17; ++field) {
        children += field >= 16 ? std::atol(word.c_str()) : 0;
    }
    return own + static_cast<double>(children) * 1e3 / static_cast<double>(sysconf(_SC_CLK_TCK));
}

// What the process has written: pages of files that nobody else happens to have mapped are anybody's.
double PrivateMemory(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    double kilobytes = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Private_Dirty")) {
            kilobytes += std::atof(line.substr(line.find(':') + 1).c_str());
        }
    }
    return kilobytes / 1024;
}

Floor MeasureFloor(int scans) {
    Floor floor;
    prctl(PR_SET_TIMERSLACK, 1);  // as the program's threads have it
    const double before = ProcessorTime(getpid());
    for (int scan = 0; scan < scans; ++scan) {
        const auto start = Clock::now();
        for (const double wait : {MessageGap, RtsLead, RtsHold}) {
            std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(wait));
        }
        floor.Late.push_back(Since(start) - ByRule);
    }
    floor.Processor = (ProcessorTime(getpid()) - before) / (3 * scans);
    return floor;
}

// How often the process's threads have gone to sleep so far.
long Sleeps(pid_t process) {
    long sum = 0;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream file(task.path() / "status");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("voluntary_ctxt_switches")) {
                sum += std::atol(line.substr(line.find(':') + 1).c_str());
            }
        }
    }
    return sum;
}

// Sends a trigger message to the only window there is, as the terminal's key handling does.
void Trigger(const TemporaryTerminal& terminal, const char* name) {
    for (const auto& entry : std::filesystem::directory_iterator(terminal.Path("windows"))) {
        if (!entry.is_socket()) {
            continue;
        }
        const Descriptor line(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        entry.path().string().copy(address.sun_path, sizeof address.sun_path - 1);
        const std::string message = std::string("{\"message\":\"") + name + "\",\"class\":\"Vantrel\"}\n";
        char answer[100];
        if (connect(line.Number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            send(line.Number(), message.data(), message.size(), MSG_NOSIGNAL) < 0 ||
            shutdown(line.Number(), SHUT_WR) != 0 || recv(line.Number(), answer, sizeof answer, 0) <= 0) {
            std::perror("trigger");
        }
    }
}

// Milliseconds over what the rules make it wait from the label's last byte to its first key, and from there
// to the last.
bool MeasureKeys(Laser& laser, XClient& client, double byRule, Figures& figures) {
    const auto sent = laser.SendLabel(Label);
    if (!client.Await(1)) {
        return false;
    }
    const double first = Since(sent) - byRule;
    if (!client.Await(Characters - 1)) {
        return false;
    }
    figures.FirstKey.push_back(first);
    figures.Typed.push_back(Since(sent) - byRule - first);
    return true;
}

// Waits for the program's READY=1.
bool AwaitReady(int notifications) {
    char text[512];
    for (;;) {
        const ssize_t count = recv(notifications, text, sizeof text - 1, 0);
        if (count < 0) {
            return false;
        }
        text[count] = 0;
        if (std::string_view(text).find("READY=1") != std::string_view::npos) {
            return true;
        }
    }
}

double IdleWakeUps(pid_t process) {
    const long before = Sleeps(process);
    std::this_thread::sleep_for(std::chrono::seconds(IdleSeconds));
    return static_cast<double>(Sleeps(process) - before) / IdleSeconds;
}

Figures MeasureProgram(XClient& client, int scans) {
    const TemporaryTerminal terminal;
    Laser laser(terminal);
    SaveLaserSettings();
    const Descriptor notifications(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    terminal.Path("notify").copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(notifications.Number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        std::perror("notifications");
    }
    const timeval patience{20, 0};
    setsockopt(notifications.Number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);

    Figures figures;
    std::optional<ChildProcess> program;
    for (int start = 0; start <= Starts; ++start) {
        const auto began = Clock::now();
        program.emplace(std::vector<std::string>{VANTREL_PROGRAMS "/vantrel"},
                        std::vector<std::string>{"QT_QPA_PLATFORM=xcb", "VANTREL_KEYBOARD=xtest",
                                                 "XDG_RUNTIME_DIR=" + terminal.Folder(),
                                                 "NOTIFY_SOCKET=" + terminal.Path("notify")});
        if (!AwaitReady(notifications.Number())) {
            std::fputs("vantrel does not become ready\n", stderr);
            std::exit(1);
        }
        figures.Start.push_back(Since(began));
        if (start < Starts) {
            program->Signal(SIGTERM);
            program->Wait();
            tcflush(laser.File(), TCIOFLUSH);
        }
    }
    Serve(laser, 20000, [&] {
        Trigger(terminal, "WM_USER1UP");
        return laser.Stops() > 0;
    });
    Serve(laser, 300, [] { return false; });
    const double before = ProcessorTime(program->Id());
    const long sleepsBefore = Sleeps(program->Id());
    for (int tries = 0; tries < 2 * scans && static_cast<int>(figures.Typed.size()) < scans; ++tries) {
        const int starts = laser.Starts();
        Trigger(terminal, "WM_USER1DOWN");
        if (!Serve(laser, 500, [&] { return laser.Starts() > starts; })) {
            continue;  // the last scan is still busy
        }
        Serve(laser, DecodeTime, [] { return false; });
        MeasureKeys(laser, client, ByRule, figures);
        Serve(laser, 20, [] { return false; });
        Trigger(terminal, "WM_USER1UP");
        Serve(laser, 100, [] { return false; });
    }
    const double measured = static_cast<double>(figures.Typed.size());
    figures.Processor = (ProcessorTime(program->Id()) - before) / measured;
    figures.SleepsOfScan = static_cast<double>(Sleeps(program->Id()) - sleepsBefore) / measured;
    Serve(laser, 1000, [] { return false; });
    figures.PrivateMegabytes = PrivateMemory(program->Id());
    figures.WakeUps = IdleWakeUps(program->Id());
    program->Signal(SIGTERM);
    program->Wait();
    return figures;
}

Figures MeasureScript(XClient& client, int scans) {
    const TemporaryTerminal terminal;
    Laser laser(terminal);
    Figures figures;
    std::optional<ChildProcess> script;
    for (int start = 0; start <= Starts; ++start) {
        const auto began = Clock::now();
        script.emplace(std::vector<std::string>{"/usr/bin/python3", SCRIPT, terminal.Path("COM1"), "38400"});
        if (!script->ReadLine(20000)) {
            std::fputs("the script needs python3-serial and xdotool\n", stderr);
            std::exit(1);
        }
        figures.Start.push_back(Since(began));
        if (start < Starts) {
            script.reset();
        }
    }
    const double before = ProcessorTime(script->Id());
    const long sleepsBefore = Sleeps(script->Id());
    while (static_cast<int>(figures.Typed.size()) < scans) {
        MeasureKeys(laser, client, MessageGap, figures);
        Serve(laser, 50, [] { return false; });
    }
    figures.Processor = (ProcessorTime(script->Id()) - before) / scans;
    figures.SleepsOfScan = static_cast<double>(Sleeps(script->Id()) - sleepsBefore) / scans;
    figures.PrivateMegabytes = PrivateMemory(script->Id());
    figures.WakeUps = IdleWakeUps(script->Id());
    return figures;
}

void Print(const char* what, double promised, double ours, double script) {
    std::printf("%-46s %9.2f %9.2f %9.2f\n", what, promised, ours, script);
}

}  // namespace

int main(int count, char** arguments) {
    const int scans = count > 1 ? std::max(1, std::atoi(arguments[1])) : 200;
    const XServer server;
    XClient client;
    const Floor floor = MeasureFloor(scans);
    const Figures script = MeasureScript(client, scans), ours = MeasureProgram(client, scans);
    std::printf("%zu labels of %zu characters, %d starts, %d idle seconds\n%-46s %9s %9s %9s\n",
                ours.Typed.size(), Characters, Starts, IdleSeconds, "", "promised", "vantrel", "script");
    Print("last byte to first key over the waits, ms", 0.7, At(ours.FirstKey, 50), At(script.FirstKey, 50));
    Print("  99th percentile", 2, At(ours.FirstKey, 99), At(script.FirstKey, 99));
    Print("first to last key, ms", 0.8, At(ours.Typed, 50), At(script.Typed, 50));
    Print("  99th percentile", 0.8, At(ours.Typed, 99), At(script.Typed, 99));
    Print("processor time a scan, ms", 0.7, ours.Processor, script.Processor);
    Print("start to ready, ms", 50, At(ours.Start, 50), At(script.Start, 50));
    Print("private memory, MB", 3.6, ours.PrivateMegabytes, script.PrivateMegabytes);
    Print("wake-ups a second, idle", 0.05, ours.WakeUps, script.WakeUps);
    std::printf("a scan wakes vantrel's threads %.1f times, the script, but for its children, %.1f times\n",
                ours.SleepsOfScan, script.SleepsOfScan);
    std::printf(
        "this machine: a scan's waits end %.2f ms late by themselves (99th percentile %.2f), and a "
        "thread that sleeps and wakes takes %.3f ms of processor time\n",
        At(floor.Late, 50), At(floor.Late, 99), floor.Processor);
    return 0;
}
