#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "platform/linux/kernel/terminal.h"
#include "platform/linux/resources/embedded.h"

namespace layer {

namespace {

bool WriteSounds(const std::string& folder) {
    for (const EmbeddedSound& sound : EmbeddedSounds()) {
        std::ofstream file(folder + "/" + std::string(sound.FileName), std::ios::binary);
        file.write(reinterpret_cast<const char*>(sound.Bytes.data()),
                   static_cast<std::streamsize>(sound.Bytes.size()));
        file.close();
        if (!file) {
            return false;
        }
    }
    return true;
}

}  // namespace

// The folder gets its name only when it is complete, so that one who comes at the same time, or after a power
// failure, finds all of it or none.
bool InstallSounds(const std::string& folder) {
    const std::string finished = folder + "/Windows";
    const std::string unfinished = finished + "." + std::to_string(getpid());
    std::error_code ignored;
    std::filesystem::remove_all(unfinished, ignored);
    const bool written = mkdir(unfinished.c_str(), 0700) == 0 && WriteSounds(unfinished) &&
                         std::rename(unfinished.c_str(), finished.c_str()) == 0;
    std::filesystem::remove_all(unfinished, ignored);
    // Another program may have been quicker.
    return written || std::filesystem::is_directory(finished, ignored);
}

}  // namespace layer
