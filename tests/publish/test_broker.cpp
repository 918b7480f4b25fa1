#include "tests/publish/test_broker.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <mosquitto.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>

#include "tests/e2e/program.h"
#include "tests/e2e/waiting.h"
#include "tests/support/temporary_terminal.h"

namespace {

bool IsListening(int port) {
    mosquitto* client = mosquitto_new(nullptr, true, nullptr);
    const bool connected = mosquitto_connect(client, "127.0.0.1", port, 60) == MOSQ_ERR_SUCCESS;
    mosquitto_destroy(client);
    return connected;
}

}  // namespace

int FreePort() {
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), size), 0);
    getsockname(made, reinterpret_cast<sockaddr*>(&address), &size);
    close(made);
    return ntohs(address.sin_port);
}

TestBroker::TestBroker(const std::string& folder, const std::string& more)
    : configuration_(folder + "/mosquitto.conf") {
    mosquitto_lib_init();
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
    EXPECT_TRUE(Within(10000, [this] { return IsListening(port_); }));
}

void TestBroker::Kill() {
    process_->Signal(SIGKILL);
    process_->Wait(5000);
}

TestSubscriber::TestSubscriber(int port, const std::function<void(mosquitto*)>& prepare) {
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
    EXPECT_TRUE(Within(10000, [this] { return Connected(); }));
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
