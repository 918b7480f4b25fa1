// Whose turn it is, for threads that must not mix what they do.
#pragma once

#include <atomic>

#include "platform/kernel.h"

class Turn {
  public:
    // Whether the turn could be had within so many milliseconds; INFINITE waits as long as it takes.
    bool Take(DWORD atMost) {
        for (DWORD waited = 0; !TryTake(); waited += Step) {
            if (waited >= atMost) {
                return false;
            }
            Sleep(Step);
        }
        return true;
    }
    // The same for as long as `wanted` says yes.
    bool TakeWhile(bool (*wanted)()) {
        while (!TryTake()) {
            if (!wanted()) {
                return false;
            }
            Sleep(Step);
        }
        return true;
    }
    bool TryTake() { return !taken_.exchange(true); }
    bool Taken() const { return taken_; }
    // By the one who has it.
    void Give() { taken_ = false; }

    static constexpr DWORD Step = 1;

  private:
    std::atomic<bool> taken_{false};
};
