#include "tests/publish/test_broker.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <mosquitto.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <list>

#include "tests/e2e/program.h"
#include "tests/support/temporary_terminal.h"

namespace {

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int ListenOn(int port) {
    const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int one = 1;
    setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    const sockaddr_in address = Loopback(port);
    const bool good = bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                      listen(listening, 100) == 0;
    EXPECT_TRUE(good) << port;
    return listening;
}

int ConnectTo(int port) {
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(port);
    if (connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(made);
        return -1;
    }
    return made;
}

bool Forward(int from, int to) {
    char block[4096];
    const ssize_t count = read(from, block, sizeof block);
    return count > 0 && write(to, block, static_cast<std::size_t>(count)) == count;
}

}  // namespace

int FreePort() {
    const int listening = ListenOn(0);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
    close(listening);
    return ntohs(address.sin_port);
}

bool WaitUntil(const std::function<bool()>& so, int milliseconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!so()) {
        if (std::chrono::steady_clock::now() > until) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

TestBroker::TestBroker(const std::string& folder, const std::string& more)
    : configuration_(folder + "/mosquitto.conf") {
    // What it has acknowledged is on its way to everybody who is connected, not in a queue of its own.
    WriteWholeFile(configuration_, "listener " + std::to_string(port_) +
                                       " 127.0.0.1\nuser root\npersistence true\npersistence_location " +
                                       folder +
                                       "/\nmax_inflight_messages 0\nmax_queued_messages 0\nlog_type error\n" +
                                       (more.empty() ? "allow_anonymous true\n" : more));
    Start();
}

void TestBroker::Start() {
    process_ = StartProgram("/usr/sbin/mosquitto", {"-c", configuration_});
    EXPECT_TRUE(WaitUntil(
        [this] {
            const int made = ConnectTo(port_);
            return made >= 0 && close(made) == 0;
        },
        10000));
}

void TestBroker::Kill() {
    process_->Signal(SIGKILL);
    process_->Wait(5000);
}

void TestBroker::Save() {
    process_->Signal(SIGUSR1);
}

TestNetwork::TestNetwork(int target) : target_(target), thread_([this] { Serve(); }) {}

TestNetwork::~TestNetwork() {
    stop_ = true;
    thread_.join();
}

void TestNetwork::Serve() {
    const int listening = ListenOn(port_);
    std::list<std::pair<int, int>> connections;
    while (!stop_) {
        std::vector<pollfd> files = {{listening, POLLIN, 0}};
        for (const auto& [near, far] : connections) {
            files.push_back({near, POLLIN, 0});
            files.push_back({far, POLLIN, 0});
        }
        poll(files.data(), files.size(), 20);
        std::size_t at = 1;
        for (auto connection = connections.begin(); connection != connections.end(); at += 2) {
            const auto [near, far] = *connection;
            const bool good = !cut_ && (files[at].revents == 0 || Forward(near, far)) &&
                              (files[at + 1].revents == 0 || Forward(far, near));
            if (!good) {
                close(near);
                close(far);
            }
            connection = good ? std::next(connection) : connections.erase(connection);
        }
        if ((files[0].revents & POLLIN) != 0) {
            const int near = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
            const int far = cut_ ? -1 : ConnectTo(target_);
            if (far >= 0) {
                connections.emplace_back(near, far);
            } else {
                close(near);
            }
        }
    }
    for (const auto& [near, far] : connections) {
        close(near);
        close(far);
    }
    close(listening);
}

TestSubscriber::TestSubscriber(int port, const std::function<void(mosquitto*)>& prepare) {
    mosquitto_lib_init();
    client_ = mosquitto_new("listener", false, this);
    mosquitto_reconnect_delay_set(client_, 1, 1, false);
    mosquitto_connect_callback_set(
        client_, [](mosquitto* client, void*, int) { mosquitto_subscribe(client, nullptr, "vantrel/#", 1); });
    mosquitto_subscribe_callback_set(client_, [](mosquitto*, void* self, int, int, const int*) {
        static_cast<TestSubscriber*>(self)->connected_ = true;
    });
    mosquitto_disconnect_callback_set(
        client_, [](mosquitto*, void* self, int) { static_cast<TestSubscriber*>(self)->connected_ = false; });
    mosquitto_message_callback_set(client_, [](mosquitto*, void* self, const mosquitto_message* message) {
        auto& subscriber = *static_cast<TestSubscriber*>(self);
        const std::scoped_lock lock(subscriber.mutex_);
        subscriber.messages_[message->topic].emplace_back(static_cast<const char*>(message->payload),
                                                          static_cast<std::size_t>(message->payloadlen));
    });
    if (prepare) {
        prepare(client_);
    }
    EXPECT_EQ(mosquitto_connect(client_, "127.0.0.1", port, 60), MOSQ_ERR_SUCCESS);
    mosquitto_loop_start(client_);
    EXPECT_TRUE(WaitUntil([this] { return Connected(); }, 10000));
}

TestSubscriber::~TestSubscriber() {
    mosquitto_disconnect(client_);
    mosquitto_loop_stop(client_, true);
    mosquitto_destroy(client_);
}

std::vector<std::string> TestSubscriber::Messages(const std::string& topic) {
    const std::scoped_lock lock(mutex_);
    return messages_[topic];
}

std::size_t TestSubscriber::Count(const std::string& topic) {
    const std::scoped_lock lock(mutex_);
    return messages_[topic].size();
}
