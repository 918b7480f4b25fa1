// A bare X server of a test's own, with a client in front that notes what is typed into it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/x_server.h"

struct _XDisplay;  // of the X library, whose names stay out of the tests

// The pixels of a part of the screen, a 24-bit word each.
struct Picture {
    int Width = 0, Height = 0;
    std::vector<unsigned> Pixels;
    bool operator==(const Picture&) const = default;
};

struct ScreenWindow {
    unsigned long Id = 0;
    int X = 0, Y = 0, Width = 0, Height = 0;
    std::string Title;
};

class TestScreen {
  public:
    // Runs Xvfb, makes it $DISPLAY and puts the client in front.
    TestScreen();
    ~TestScreen();
    TestScreen(const TestScreen&) = delete;
    TestScreen& operator=(const TestScreen&) = delete;

    // Waits until the client has got that much text, Return as a line feed, and a little longer, in which
    // nothing more should come. Forgets it then.
    std::string Typed(std::size_t count, int milliseconds = 5000);
    // Gives the client, or another window, the focus.
    void BringToFront();
    void Focus(unsigned long window);

    // Windows that can be seen, the one below first.
    std::vector<ScreenWindow> Windows();
    std::optional<ScreenWindow> WaitForWindow(const std::string& title, int milliseconds = 10000);
    bool WaitUntilGone(const std::string& title, int milliseconds = 5000);

    Picture Capture(int x, int y, int width, int height);
    // Writes the whole screen as a PPM file.
    void Save(const std::string& path);

    void Press(unsigned long symbol);
    void Click(int x, int y);
    // No key of the keyboard is down and no lock is on.
    bool KeysAreUp();

  private:
    XServer server_;
    _XDisplay* display_ = nullptr;
    unsigned long client_ = 0;
};
