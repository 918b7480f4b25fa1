// Where synthetic key events go. One small file per back end; choose_keyboard.cpp chooses.
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
    // Sends what a key may have left to be sent. The same caller.
    virtual void Flush() {}
    // Lets go of every key that is down.
    virtual void ReleaseAll() = 0;
};

// Each is null when it cannot be used; some then say why.
std::unique_ptr<KeyboardBackend> MakeXtestKeyboard();
std::unique_ptr<KeyboardBackend> MakeWaylandKeyboard(std::string& whyNot);
// `layout`: what the keyboards of this machine are read by; empty: see LayoutKeys.
std::unique_ptr<KeyboardBackend> MakeUinputKeyboard(const std::string& layout, std::string& whyNot);
// The same without a device: writes the kernel's events into a file, which is taken over, and reads them
// there.
std::unique_ptr<KeyboardBackend> MakeUinputKeyboard(int fd, const std::string& layout);
std::unique_ptr<KeyboardBackend> MakeTraceKeyboard(const std::string& file);  // appends a line per event

// By $VANTREL_KEYBOARD, or what fits the session; says on standard error what was chosen and why. Never null.
std::unique_ptr<KeyboardBackend> ChooseKeyboard();

// Chooses and connects the back end now, so that the first key leaves at once. Any thread.
void PrepareKeyboard();
// Tests: send the events elsewhere (null: choose by the environment again).
void InstallKeyboard(std::unique_ptr<KeyboardBackend> backend);

}  // namespace layer
