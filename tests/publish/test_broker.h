// A real broker, and somebody who listens to it.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

struct mosquitto;

// A port of the loopback interface that nobody uses now.
int FreePort();

class TestBroker {
  public:
    // With further lines of configuration.
    explicit TestBroker(const std::string& folder, const std::string& more = "");
    void Start();
    void Kill();
    void Signal(int number) { process_->Signal(number); }
    int Port() const { return port_; }

  private:
    int port_ = FreePort();
    std::string configuration_;
    std::unique_ptr<ChildProcess> process_;
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
