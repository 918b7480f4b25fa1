// A keyboard of our own, known by the kernel's key codes: what the Wayland and the kernel back end share.
//
// A key is pressed and released in one go when it goes down, so none is ever left down, whatever becomes of
// this program; the Shift key is remembered and becomes part of the character.
#pragma once

#include <chrono>
#include <utility>

#include "platform/linux/keyboard/keyboard_backend.h"
#include "platform/linux/keyboard/layout_keys.h"

namespace layer {

// How fast characters may follow each other. Who takes our keys has room for so many only, and what does not
// fit is lost there without a word.
struct StrokeRate {
    int Burst;                        // characters at once
    std::chrono::microseconds Pause;  // for each one more
};

class StrokeKeyboard : public KeyboardBackend {
  public:
    StrokeKeyboard(LayoutKeys keys, StrokeRate rate) : keys_(std::move(keys)), rate_(rate) {}
    void Key(BYTE key, bool up) final;
    void ReleaseAll() override { shift_ = false; }

  protected:
    using Clock = std::chrono::steady_clock;

    const LayoutKeys& Layout() const { return keys_; }
    // Whether keys can be sent now; the place to look for a connection that was lost.
    virtual bool Ready() = 0;
    virtual bool CapsLock() { return false; }
    // Sends the key down and up again, with what is to be held down with it.
    virtual void Press(const LayoutKey& key) = 0;

  private:
    void WaitForRoom();

    const LayoutKeys keys_;
    const StrokeRate rate_;
    bool shift_ = false;
    Clock::time_point paidUntil_{};  // when everything sent so far has had its pause
};

}  // namespace layer
