// The connection to the MQTT broker: sends what waits in the store, in order, and forgets what was
// acknowledged.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "tools/publish/publish_options.h"
#include "tools/publish/scan_store.h"

class Broker {
  public:
    Broker(const PublishOptions& options, ScanStore& store);
    ~Broker();
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;

    // False when there is no thread to serve.
    bool Runs() const { return thread_.joinable(); }
    // Something new waits. Any thread.
    void Wake();
    // Says "offline" and leaves, within two seconds.
    void Stop();

  private:
    void Serve();

    const PublishOptions options_;
    ScanStore& store_;
    int wake_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};
