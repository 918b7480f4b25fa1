// The trigger key from input devices.
#include <libevdev/libevdev.h>
#include <poll.h>
#include <sys/signalfd.h>

#include <bitset>
#include <csignal>
#include <deque>
#include <map>

#include "tools/input_device.h"
#include "tools/trigger.h"

namespace {

// The trigger keys, each of which several keys may stand for: down with the first, up with the last.
class Triggers {
  public:
    explicit Triggers(const std::vector<BoundKey>& keys) : keys_(keys) {}

    void Take(const InputDevice& device, KeyEvent event) {
        for (const BoundKey& key : keys_) {
            if (key.Code != event.Code) {
                continue;
            }
            int& held = held_[key.Trigger];
            auto& own = ours_[&device];
            if (own.test(event.Code) == event.Down) {
                continue;
            }
            own.set(event.Code, event.Down);
            held += event.Down ? 1 : -1;
            if (held == (event.Down ? 1 : 0)) {
                static_cast<void>(SendTrigger(key.Trigger, event.Down, 0));  // it has said so
            }
        }
    }
    void LetGo() {
        for (auto& [trigger, held] : held_) {
            if (held > 0) {
                static_cast<void>(SendTrigger(trigger, false, 0));
            }
        }
    }

  private:
    const std::vector<BoundKey>& keys_;
    std::map<DWORD, int> held_;
    std::map<const InputDevice*, std::bitset<KEY_CNT>> ours_;  // whose press has been sent
};

int EndingSignals() {
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&endings, signal);
    }
    sigprocmask(SIG_BLOCK, &endings, nullptr);
    return signalfd(-1, &endings, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace

bool ReadBoundKey(const std::string& text, BoundKey& key) {
    const std::size_t sign = text.find('=');
    const int code = libevdev_event_code_from_name(EV_KEY, text.substr(0, sign).c_str());
    const std::string trigger = sign == std::string::npos ? "1" : text.substr(sign + 1);
    if (code < 0 || (trigger != "1" && trigger != "2")) {
        return false;
    }
    key = {static_cast<unsigned>(code), trigger == "1" ? 1u : 2u};
    return true;
}

int WatchDevices(const DeviceOptions& options) {
    std::deque<InputDevice> devices;
    for (const std::string& path : options.Devices) {
        devices.emplace_back(path, options.Grab);
    }
    Triggers triggers(options.Keys);
    std::vector<pollfd> files{{EndingSignals(), POLLIN, 0}};
    for (;;) {
        bool away = false;
        files.resize(1);
        for (InputDevice& device : devices) {
            away = !device.Open() || away;
            files.push_back({device.File(), POLLIN, 0});  // poll passes over one that is away
        }
        if (poll(files.data(), files.size(), away ? static_cast<int>(InputDevice::RetryPause.count()) : -1) <
            0) {
            continue;
        }
        if (files[0].revents != 0) {
            triggers.LetGo();
            return 0;
        }
        for (std::size_t at = 0; at < devices.size(); ++at) {
            if (files[at + 1].revents != 0) {
                devices[at].Read([&](KeyEvent event) { triggers.Take(devices[at], event); });
            }
        }
    }
}
