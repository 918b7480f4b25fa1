#include "platform/sound.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/linux/kernel/sound_backend.h"
#include "platform/linux/kernel/terminal.h"
#include "platform/linux/kernel/thread.h"

namespace layer {

namespace {

// What the sound thread is asked to do. Only the newest wish counts: whatever plays is cancelled in any case.
// Connecting to a sound server can take long, so no caller ever waits for the thread.
struct SoundDesk {
    std::mutex Mutex;
    std::condition_variable Asked;
    std::condition_variable Done;
    std::array<WCHAR, MAX_PATH> Name{};  // empty: be silent
    bool Waiting = false;
    bool Working = false;
    bool ThreadRuns = false;
    bool Sounding = false;   // something was started after the last cancellation
    bool Installed = false;  // the back end is a test's
    std::unique_ptr<SoundBackend> Backend;
};

SoundDesk& Desk() {
    static auto* desk = new SoundDesk;
    return *desk;
}

void RunSounds() {
    SoundDesk& desk = Desk();
    std::unique_lock lock(desk.Mutex);
    for (;;) {
        desk.Asked.wait(lock, [&desk] { return desk.Waiting; });
        const std::array<WCHAR, MAX_PATH> name = desk.Name;
        std::unique_ptr<SoundBackend> backend = std::move(desk.Backend);
        desk.Waiting = false;
        desk.Working = true;
        lock.unlock();

        if (backend == nullptr) {
            backend = MakeCanberraSound();
        }
        backend->Cancel();
        const std::string path = name[0] != 0 ? HostPath(name.data()) : std::string();
        const bool plays = !path.empty() && backend->Play(path);

        lock.lock();
        // A back end that a test has installed meanwhile stays.
        if (desk.Backend == nullptr) {
            desk.Backend = std::move(backend);
        }
        desk.Sounding = plays;
        desk.Working = false;
        desk.Done.notify_all();
    }
}

bool Ask(LPCWSTR name) {
    const std::u16string_view wanted = name != nullptr ? name : u"";
    SoundDesk& desk = Desk();
    std::unique_lock lock(desk.Mutex);
    if (wanted.size() >= desk.Name.size()) {
        return false;
    }
    // Nobody is woken for silence where it is silent, or for a sound that nothing can play.
    const bool silent = !desk.Sounding && !desk.Waiting && !desk.Working;
    if (silent && (wanted.empty() || (!desk.Installed && !AnySoundDevice()))) {
        return true;
    }
    *std::copy(wanted.begin(), wanted.end(), desk.Name.begin()) = 0;
    if (!desk.ThreadRuns) {
        std::thread thread = StartHostThread(RunSounds);
        if (!thread.joinable()) {
            return true;
        }
        thread.detach();
        desk.ThreadRuns = true;
    }
    desk.Waiting = true;
    lock.unlock();
    desk.Asked.notify_one();
    return true;
}

}  // namespace

void InstallSound(std::unique_ptr<SoundBackend> backend) {
    SoundDesk& desk = Desk();
    std::scoped_lock lock(desk.Mutex);
    desk.Backend = std::move(backend);
    desk.Installed = desk.Backend != nullptr;
}

void FinishSounds() {
    SoundDesk& desk = Desk();
    std::unique_lock lock(desk.Mutex);
    desk.Done.wait(lock, [&desk] { return !desk.Waiting && !desk.Working; });
}

}  // namespace layer

BOOL PlaySoundW(LPCWSTR name, HMODULE, DWORD flags) {
    layer::ParkAtEnd();
    if (name != nullptr && (flags & SND_FILENAME) == 0) {
        return FALSE;
    }
    return layer::Ask(name) ? TRUE : FALSE;
}
