#include <canberra.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/linux/kernel/sound_backend.h"

namespace layer {

namespace {

constexpr std::uint32_t SoundId = 1;

bool Exists(const char* path) {
    return access(path, F_OK) == 0;
}

class CanberraSound : public SoundBackend {
  public:
    bool Play(const std::string& path) override {
        if (context_ == nullptr && !Open()) {
            return false;
        }
        // A failure (no device, no sound server, no such file) is silence; the next sound tries anew, since a
        // server may have come meanwhile.
        if (ca_context_play(context_, SoundId, CA_PROP_MEDIA_FILENAME, path.c_str(), CA_PROP_MEDIA_ROLE,
                            "event", CA_PROP_CANBERRA_CACHE_CONTROL, "never", nullptr) != CA_SUCCESS) {
            ca_context_destroy(context_);
            context_ = nullptr;
        }
        return context_ != nullptr;
    }

    void Cancel() override {
        if (context_ != nullptr) {
            ca_context_cancel(context_, SoundId);
        }
    }

    ~CanberraSound() override {
        if (context_ != nullptr) {
            ca_context_destroy(context_);
        }
    }

  private:
    bool Open() {
        if (ca_context_create(&context_) != CA_SUCCESS) {
            context_ = nullptr;
            return false;
        }
        ca_context_change_props(context_, CA_PROP_APPLICATION_NAME, "Vantrel", CA_PROP_APPLICATION_ID,
                                "vantrel", nullptr);
        return true;
    }

    ca_context* context_ = nullptr;
};

}  // namespace

// Without a device the sound libraries fail as well, but each attempt fills standard error with their
// complaints.
bool AnySoundDevice() {
    char server[PATH_MAX];
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::snprintf(server, sizeof server, "%s/pulse/native", runtime != nullptr ? runtime : "");
    return std::getenv("PULSE_SERVER") != nullptr || (runtime != nullptr && Exists(server)) ||
           Exists("/dev/snd/controlC0") || Exists("/dev/snd/controlC1") || Exists("/dev/dsp");
}

std::unique_ptr<SoundBackend> MakeCanberraSound() {
    return std::make_unique<CanberraSound>();
}

}  // namespace layer
