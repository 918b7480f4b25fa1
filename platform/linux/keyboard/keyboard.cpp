// Synthetic key events: whose turn it is, and where they go.
//
// Two readers may type at the same time. A thread has the keyboard from its first key down to its last key
// up, so that one's Shift never falls on the other's letter.
#include "platform/keyboard.h"

#include <bitset>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/linux/kernel/thread.h"
#include "platform/linux/keyboard/keyboard_backend.h"

namespace layer {
namespace {

constexpr int EndTries = 100;
constexpr std::chrono::milliseconds EndPause{10};

struct Typist;

struct Keyboard {
    std::mutex mutex;
    std::condition_variable free;
    std::unique_ptr<KeyboardBackend> backend;
    const Typist* owner = nullptr;  // the thread that has a key down
    bool over = false;              // the program ends: no key any more
    bool endRegistered = false;
};

Keyboard& TheKeyboard() {
    static auto* keyboard = new Keyboard;  // outlives every thread
    return *keyboard;
}

// What the calling thread holds down.
struct Typist {
    std::bitset<256> down;
    bool bursting = false;
    ~Typist();
};

thread_local Typist typist;

// A thread that ends with a key down lets go of it.
Typist::~Typist() {
    Keyboard& keyboard = TheKeyboard();
    const std::lock_guard lock(keyboard.mutex);
    if (keyboard.owner != this) {
        return;
    }
    if (keyboard.backend) {
        keyboard.backend->ReleaseAll();
    }
    keyboard.owner = nullptr;
    keyboard.free.notify_one();
}

// With the keyboard's lock held.
void MakeReady(Keyboard& keyboard) {
    if (!keyboard.backend) {
        keyboard.backend = ChooseKeyboard();
    }
    if (keyboard.endRegistered) {
        return;
    }
    keyboard.endRegistered = true;
    AtEnd([] {
        Keyboard& ending = TheKeyboard();
        std::unique_lock lock(ending.mutex, std::try_to_lock);
        // A thread may hang in a display that does not answer; the program ends all the same.
        for (int i = 0; i < EndTries && !lock.owns_lock(); ++i) {
            std::this_thread::sleep_for(EndPause);
            lock.try_lock();
        }
        if (!lock.owns_lock()) {
            return;
        }
        ending.over = Ending();
        ending.endRegistered = false;
        if (ending.backend) {
            ending.backend->ReleaseAll();
        }
    });
}

}  // namespace

void PrepareKeyboard() {
    Keyboard& keyboard = TheKeyboard();
    const std::lock_guard lock(keyboard.mutex);
    MakeReady(keyboard);
}

void InstallKeyboard(std::unique_ptr<KeyboardBackend> backend) {
    Keyboard& keyboard = TheKeyboard();
    const std::lock_guard lock(keyboard.mutex);
    if (keyboard.backend) {
        keyboard.backend->ReleaseAll();
    }
    keyboard.backend = std::move(backend);
}

}  // namespace layer

void keybd_event(BYTE key, BYTE, DWORD flags, ULONG_PTR) {
    using namespace layer;
    const bool up = (flags & KEYEVENTF_KEYUP) != 0;
    ParkAtEnd();
    Typist& self = typist;
    Keyboard& keyboard = TheKeyboard();
    std::unique_lock lock(keyboard.mutex);
    keyboard.free.wait(lock, [&] { return keyboard.owner == nullptr || keyboard.owner == &self; });
    MakeReady(keyboard);
    if (!keyboard.over) {
        keyboard.backend->Key(key, up);
        if (!self.bursting) {
            keyboard.backend->Flush();
        }
    }
    const bool had = self.down.any();
    self.down.set(key, !up);
    if (!had && self.down.any()) {
        keyboard.owner = &self;
    } else if (had && self.down.none()) {
        keyboard.owner = nullptr;
        keyboard.free.notify_one();
    }
}

KeyBurst::KeyBurst() {
    layer::typist.bursting = true;
}

KeyBurst::~KeyBurst() {
    layer::typist.bursting = false;
    layer::Keyboard& keyboard = layer::TheKeyboard();
    const std::lock_guard lock(keyboard.mutex);
    if (keyboard.backend) {
        keyboard.backend->Flush();
    }
}
