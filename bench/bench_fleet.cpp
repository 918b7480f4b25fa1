// Many terminals and one broker on this machine: bench_fleet [TERMINALS [SECONDS]]. Each terminal is a
// vantrel-publish of its own, with its folder and its store, whose scans come by the messages that vantrel
// would send. Prints scans a second and how long deliveries take from the terminal's message to a subscriber
// of the broker: at a scan a second for each terminal, and as fast as each takes them.
#include <mosquitto.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>

#include "scan/decode_record.h"
#include "tests/e2e/program.h"
#include "tests/e2e/waiting.h"
#include "tests/publish/test_broker.h"
#include "tests/support/temporary_terminal.h"

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int MostScans = 1000;  // of one terminal

struct FleetTerminal {
    std::string Folder;
    std::unique_ptr<ChildProcess> Publisher;
    int Connection = -1;
    std::vector<Clock::time_point> Sent = std::vector<Clock::time_point>(MostScans);
};
std::vector<FleetTerminal> Fleet;

std::mutex Mutex;
std::vector<double> Milliseconds;  // of each delivery

void OnMessage(mosquitto*, void*, const mosquitto_message* message) {
    const auto now = Clock::now();
    const std::string text(static_cast<const char*>(message->payload),
                           static_cast<std::size_t>(message->payloadlen));
    const std::size_t at = text.find("\"data\":\"T");
    unsigned terminal = 0, scan = 0;
    if (at == std::string::npos ||
        std::sscanf(text.c_str() + at, "\"data\":\"T%u-%u", &terminal, &scan) != 2 ||
        terminal >= Fleet.size() || scan >= MostScans) {
        return;
    }
    const std::scoped_lock lock(Mutex);
    Milliseconds.push_back(
        std::chrono::duration<double, std::milli>(now - Fleet[terminal].Sent[scan]).count());
}

std::size_t Arrived() {
    const std::scoped_lock lock(Mutex);
    return Milliseconds.size();
}

// The publisher's socket, once it listens.
std::string SocketOf(const std::string& folder) {
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(folder + "/windows", none)) {
        if (entry.is_socket() && entry.path().filename().string().front() != '.') {
            return entry.path();
        }
    }
    return {};
}

int Connect(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? made : -1;
}

bool Scan(std::size_t terminal, int number) {
    DecodeRecord record{};
    record.source = SourceBarcode;
    record.codeType = 'I';
    char data[32];
    record.length = static_cast<DWORD>(std::snprintf(data, sizeof data, "T%zu-%d", terminal, number));
    std::memcpy(record.data, data, record.length);
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(&record), sizeof record).toBase64();
    const std::string line =
        "{\"message\":\"WM_COPYDATA\",\"name\":\"WM_DECODE\",\"data\":\"" + bytes.toStdString() + "\"}\n";
    Fleet[terminal].Sent[static_cast<std::size_t>(number)] = Clock::now();
    const int connection = Fleet[terminal].Connection;
    if (write(connection, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        return false;
    }
    char byte = 0;
    while (byte != '\n') {
        if (read(connection, &byte, 1) != 1) {
            return false;
        }
    }
    return true;
}

// Scans `count` labels on each terminal, from number `first` on, a pause after each; prints the figures.
bool Measure(const char* name, int first, int count, std::chrono::milliseconds pause) {
    {
        const std::scoped_lock lock(Mutex);
        Milliseconds.clear();
    }
    const auto start = Clock::now();
    std::vector<std::thread> threads;
    std::atomic<bool> good{true};
    for (std::size_t terminal = 0; terminal < Fleet.size(); ++terminal) {
        threads.emplace_back([=, &good] {
            // Nobody scans in step.
            std::this_thread::sleep_for(pause * terminal / Fleet.size());
            for (int number = first; number < first + count; ++number) {
                const auto next = Clock::now() + pause;
                good = Scan(terminal, number) && good;
                std::this_thread::sleep_until(next);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::size_t wanted = Fleet.size() * static_cast<std::size_t>(count);
    good = Within(60000, [&] { return Arrived() >= wanted; }) && good;
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const std::scoped_lock lock(Mutex);
    std::sort(Milliseconds.begin(), Milliseconds.end());
    if (Milliseconds.empty()) {
        return false;
    }
    std::printf("%-22s %7zu of %zu scans  %8.0f a second  median %7.1f ms  99%% %7.1f ms  slowest %7.1f ms\n",
                name, Milliseconds.size(), wanted, static_cast<double>(wanted) / seconds,
                Milliseconds[Milliseconds.size() / 2], Milliseconds[Milliseconds.size() * 99 / 100],
                Milliseconds.back());
    return good;
}

}  // namespace

int main(int count, char** arguments) {
    const int terminals = count > 1 ? std::clamp(std::atoi(arguments[1]), 1, 500) : 200;
    const int seconds = count > 2 ? std::clamp(std::atoi(arguments[2]), 1, 300) : 20;
    const TemporaryTerminal base;
    TestBroker broker(base.Folder());
    setenv("XDG_RUNTIME_DIR", base.Folder().c_str(), 0);
    Fleet.resize(static_cast<std::size_t>(terminals));
    for (std::size_t at = 0; at < Fleet.size(); ++at) {
        FleetTerminal& terminal = Fleet[at];
        terminal.Folder = base.Folder() + "/" + std::to_string(at);
        fs::create_directories(terminal.Folder);
        const std::string file = terminal.Folder + "/publish.toml";
        WriteWholeFile(file, "host = \"127.0.0.1\"\nport = " + std::to_string(broker.Port()) +
                                 "\nterminal = \"" + std::to_string(at) + "\"\n");
        terminal.Publisher =
            StartProgram("vantrel-publish", {"--config", file}, {"VANTREL_TERMINAL=" + terminal.Folder});
    }
    mosquitto_lib_init();
    mosquitto* subscriber = mosquitto_new("bench", true, nullptr);
    mosquitto_message_callback_set(subscriber, OnMessage);
    mosquitto_connect_callback_set(subscriber, [](mosquitto* client, void*, int) {
        mosquitto_subscribe(client, nullptr, "vantrel/+/scans", 1);
    });
    mosquitto_connect(subscriber, "127.0.0.1", broker.Port(), 60);
    mosquitto_loop_start(subscriber);
    for (FleetTerminal& terminal : Fleet) {
        if (!Within(120000, [&] { return !SocketOf(terminal.Folder).empty(); })) {
            std::fputs("a publisher does not start\n", stderr);
            return 1;
        }
        terminal.Connection = Connect(SocketOf(terminal.Folder));
    }
    std::printf("%d terminals\n", terminals);
    std::fflush(stdout);
    bool good = Measure("a scan a second each", 0, seconds, std::chrono::seconds(1));
    good = Measure("as fast as they go", seconds, 25, std::chrono::milliseconds(0)) && good;
    mosquitto_disconnect(subscriber);
    mosquitto_loop_stop(subscriber, true);
    return good ? 0 : 1;
}
