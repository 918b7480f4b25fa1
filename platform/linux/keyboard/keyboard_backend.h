// Where synthetic key events go. One small file per back end; keyboard.cpp chooses by $VANTREL_KEYBOARD.
#pragma once

#include <memory>
#include <string>

#include "platform/base.h"

namespace layer {

class KeyboardBackend {
  public:
    virtual ~KeyboardBackend() = default;
    // One event, in the caller's thread, one caller at a time. `key` is a virtual key.
    virtual void Key(BYTE key, bool up) = 0;
    // Lets go of every key that is down.
    virtual void ReleaseAll() = 0;
};

std::unique_ptr<KeyboardBackend> MakeXtestKeyboard();                         // null without a usable display
std::unique_ptr<KeyboardBackend> MakeTraceKeyboard(const std::string& file);  // appends a line per event

// Chooses and connects the back end now, so that the first key leaves at once. Any thread.
void PrepareKeyboard();
// Tests: send the events elsewhere (null: choose by the environment again).
void InstallKeyboard(std::unique_ptr<KeyboardBackend> backend);

}  // namespace layer
