// What plays sound files. canberra.cpp is the real one; all calls come from the sound thread.
#pragma once

#include <memory>
#include <string>

namespace layer {

class SoundBackend {
  public:
    virtual ~SoundBackend() = default;
    // Starts the file and returns while it plays; false where that is not possible.
    virtual bool Play(const std::string& path) = 0;
    // Stops what plays.
    virtual void Cancel() = 0;
};

std::unique_ptr<SoundBackend> MakeCanberraSound();
// Whether that has anything to play on. Any thread; takes no memory.
bool AnySoundDevice();

// Tests: send the sounds elsewhere.
void InstallSound(std::unique_ptr<SoundBackend> backend);
// Waits until the sound thread has done everything that was asked of it; for tests.
void FinishSounds();

}  // namespace layer
