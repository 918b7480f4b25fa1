#include "tools/publish/broker.h"

#include <mosquitto.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <vector>

#include "platform/linux/kernel/thread.h"

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int MostOnTheWay = 100;           // sent and not acknowledged
constexpr std::size_t FewestToForget = 50;  // acknowledged ones, so that not each costs a commit of its own
constexpr milliseconds LongestRemembered{500};
constexpr milliseconds ShortestPause{250};  // between two connections
constexpr milliseconds LongestPause{10'000};
constexpr milliseconds LongestFarewell{2000};
constexpr int Tick = 200;  // milliseconds

// One connection. The library sends again what was not acknowledged by a connection before; here each starts
// from the store instead, which knows it too, so that nothing is kept in two places.
class Session {
  public:
    Session(const PublishOptions& options, ScanStore& store) : options_(options), store_(store) {
        client_ = mosquitto_new(("vantrel-" + options.Terminal).c_str(), false, this);
        if (client_ == nullptr) {
            return;
        }
        mosquitto_max_inflight_messages_set(client_, MostOnTheWay);
        mosquitto_connect_callback_set(client_, [](mosquitto*, void* self, int result) {
            static_cast<Session*>(self)->OnConnect(result);
        });
        mosquitto_publish_callback_set(client_, [](mosquitto*, void* self, int message) {
            static_cast<Session*>(self)->OnAcknowledged(message);
        });
    }
    ~Session() { mosquitto_destroy(client_); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Empty, or why there is no connection.
    std::string Connect() {
        if (client_ == nullptr) {
            return "no memory";
        }
        const std::string status = options_.Topic + "/status";
        int result = mosquitto_will_set(client_, status.c_str(), 7, "offline", 1, true);
        if (result == MOSQ_ERR_SUCCESS && !options_.User.empty()) {
            std::string password;
            std::ifstream file(options_.PasswordFile);
            if (!options_.PasswordFile.empty() && !std::getline(file, password)) {
                return options_.PasswordFile + " cannot be read";
            }
            result = mosquitto_username_pw_set(client_, options_.User.c_str(),
                                               options_.PasswordFile.empty() ? nullptr : password.c_str());
        }
        const auto orNull = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
        if (result == MOSQ_ERR_SUCCESS && !options_.AuthorityFile.empty()) {
            result = mosquitto_tls_set(client_, options_.AuthorityFile.c_str(), nullptr,
                                       orNull(options_.CertificateFile), orNull(options_.KeyFile), nullptr);
        }
        if (result == MOSQ_ERR_SUCCESS) {
            result = mosquitto_connect(client_, options_.Host.c_str(), options_.Port, options_.KeepAlive);
        }
        return result == MOSQ_ERR_SUCCESS ? std::string() : mosquitto_strerror(result);
    }

    // Lets messages come and go for a moment. False when the connection is over.
    bool Turn(int wake) {
        const int socket = mosquitto_socket(client_);
        const bool writes = mosquitto_want_write(client_);
        pollfd files[] = {{socket, static_cast<short>(writes ? POLLIN | POLLOUT : POLLIN), 0},
                          {wake, POLLIN, 0}};
        if (socket < 0 || (poll(files, 2, Tick) < 0 && errno != EINTR)) {
            return false;
        }
        std::uint64_t count;
        if ((files[1].revents & POLLIN) != 0) {
            [[maybe_unused]] const auto taken = read(wake, &count, sizeof count);
        }
        int result = MOSQ_ERR_SUCCESS;
        if ((files[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
            result = mosquitto_loop_read(client_, 100);
        }
        if (result == MOSQ_ERR_SUCCESS && (files[0].revents & POLLOUT) != 0) {
            result = mosquitto_loop_write(client_, 100);
        }
        if (result == MOSQ_ERR_SUCCESS) {
            result = mosquitto_loop_misc(client_);
        }
        Forget(false);
        Feed();
        return result == MOSQ_ERR_SUCCESS && !refused_;
    }

    void Leave(int wake) {
        if (connected_) {
            Send("status", "offline", true);
            const auto until = SteadyClock::now() + LongestFarewell;
            while (!onTheWay_.empty() && SteadyClock::now() < until && Turn(wake)) {
            }
            Forget(true);
        }
        mosquitto_disconnect(client_);
    }

    bool Connected() const { return connected_; }
    const std::string& Refusal() const { return refusal_; }

  private:
    void OnConnect(int result) {
        connected_ = result == 0;
        refused_ = result != 0;
        if (refused_) {
            refusal_ = mosquitto_connack_string(result);
            return;
        }
        Send("status", "online", true);
    }

    void OnAcknowledged(int message) {
        const auto found = onTheWay_.find(message);
        if (found == onTheWay_.end()) {
            return;
        }
        if (found->second != 0) {
            if (acknowledged_.empty()) {
                oldest_ = SteadyClock::now();
            }
            acknowledged_.push_back(found->second);
        }
        onTheWay_.erase(found);
    }

    bool Send(const char* topic, const std::string& payload, bool retain, std::int64_t sequence = 0) {
        int message = 0;
        const int result = mosquitto_publish(client_, &message, (options_.Topic + "/" + topic).c_str(),
                                             static_cast<int>(payload.size()), payload.data(), 1, retain);
        if (result == MOSQ_ERR_SUCCESS) {
            onTheWay_[message] = sequence;
        }
        return result == MOSQ_ERR_SUCCESS;
    }

    void Feed() {
        const int room = MostOnTheWay - static_cast<int>(onTheWay_.size());
        if (!connected_ || room <= 0) {
            return;
        }
        for (const WaitingMessage& message : store_.After(lastSent_, room)) {
            if (!Send("scans", message.Payload, false, message.Sequence)) {
                return;
            }
            lastSent_ = message.Sequence;
        }
    }

    // What the disk keeps from being forgotten now is tried again.
    void Forget(bool all) {
        const bool due =
            all || acknowledged_.size() >= FewestToForget || SteadyClock::now() - oldest_ > LongestRemembered;
        if (!acknowledged_.empty() && due) {
            if (store_.Remove(acknowledged_)) {
                acknowledged_.clear();
            }
            oldest_ = SteadyClock::now();
        }
    }

    const PublishOptions& options_;
    ScanStore& store_;
    mosquitto* client_ = nullptr;
    bool connected_ = false, refused_ = false;
    std::string refusal_;
    std::map<int, std::int64_t> onTheWay_;  // by the library's number; 0 for a status
    std::int64_t lastSent_ = 0;
    std::vector<std::int64_t> acknowledged_;
    SteadyClock::time_point oldest_;
};

}  // namespace

Broker::Broker(const PublishOptions& options, ScanStore& store)
    : options_(options), store_(store), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    mosquitto_lib_init();
    thread_ = layer::StartHostThread([this] { Serve(); });
}

Broker::~Broker() {
    Stop();
    close(wake_);
}

void Broker::Wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);
}

void Broker::Stop() {
    stop_ = true;
    Wake();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void Broker::Serve() {
    milliseconds pause = ShortestPause;
    std::string said;
    const auto say = [&](const std::string& what) {
        if (what != said) {
            std::fprintf(stderr, "vantrel-publish: %s\n", what.c_str());
            said = what;
        }
    };
    while (!stop_) {
        Session session(options_, store_);
        std::string wrong = session.Connect();
        if (wrong.empty()) {
            wrong = "the connection was lost";
            while (!stop_ && session.Turn(wake_)) {
                if (session.Connected()) {
                    say("connected to " + options_.Host + ":" + std::to_string(options_.Port));
                    pause = ShortestPause;
                }
            }
            if (!session.Refusal().empty()) {
                wrong = session.Refusal();
            }
        }
        if (stop_) {
            session.Leave(wake_);
            return;
        }
        say("broker " + options_.Host + ":" + std::to_string(options_.Port) + ": " + wrong);
        const auto until = SteadyClock::now() + pause;
        while (!stop_ && SteadyClock::now() < until) {
            std::this_thread::sleep_for(milliseconds(50));
        }
        pause = std::min(pause * 2, LongestPause);
    }
}
