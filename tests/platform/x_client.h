// The client in front on a bare X server.
#pragma once

#include <X11/Xlib.h>

#include <string>

#include "tests/support/x_server.h"

class XClient {
  public:
    XClient();
    ~XClient();
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    // The characters that have been typed since the last call, as every client looks them up; ends when
    // `count` have come or nothing comes any more. Keys without a character show as <name>, modifiers not at
    // all; Control, Alt and the like show in front: ^C, !A.
    std::string Typed(std::size_t count);
    // Waits for that many keys and takes them; false when for 3 s none comes.
    bool Await(std::size_t count);

    // What the user does. On the real keyboard, or on the one that programs use.
    void Hold(KeySym key, bool real = true) { Press(key, true, real); }
    void LetGo(KeySym key, bool real = true) { Press(key, false, real); }
    void Tap(KeySym key);
    void Lock(unsigned group, unsigned modifiers = 0, unsigned latched = 0);
    // What the keyboard is like now.
    unsigned Modifiers() const;
    unsigned LockedModifiers() const;
    bool AnyKeyDown() const;
    bool IsDown(KeySym key) const;

  private:
    void Press(KeySym key, bool down, bool real);

    Display* display_;
    Window window_ = 0;
    void* keyboard_ = nullptr;  // the real one
};
