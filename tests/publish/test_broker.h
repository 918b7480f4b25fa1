// A real broker, a network that can be cut in front of it, and somebody who listens to it.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child_process.h"

struct mosquitto;

// A port of the loopback interface that nobody uses now.
int FreePort();
// Waits in small steps until it is so; false after the time.
bool WaitUntil(const std::function<bool()>& so, int milliseconds);

class TestBroker {
  public:
    // With further lines of configuration.
    explicit TestBroker(const std::string& folder, const std::string& more = "");
    void Start();
    void Kill();
    // Writes its sessions to the disk.
    void Save();
    int Port() const { return port_; }

  private:
    int port_ = FreePort();
    std::string configuration_;
    std::unique_ptr<ChildProcess> process_;
};

// Forwards connections from a port of its own until it is cut; then they break, and no new ones are taken.
class TestNetwork {
  public:
    explicit TestNetwork(int target);
    ~TestNetwork();
    int Port() const { return port_; }
    void Cut(bool cut) { cut_ = cut; }

  private:
    void Serve();

    int port_ = FreePort();
    int target_;
    std::atomic<bool> cut_{false}, stop_{false};
    std::thread thread_;
};

// Takes everything below vantrel/# with a session that outlives its connections.
class TestSubscriber {
  public:
    explicit TestSubscriber(int port, const std::function<void(mosquitto*)>& prepare = {});
    ~TestSubscriber();
    bool Connected() const { return connected_; }
    // What has come on a topic, oldest first.
    std::vector<std::string> Messages(const std::string& topic);
    std::size_t Count(const std::string& topic);

  private:
    mosquitto* client_;
    std::atomic<bool> connected_{false};
    std::mutex mutex_;
    std::map<std::string, std::vector<std::string>> messages_;
};
