// A bare X server of a test's own.
#pragma once

#include "tests/e2e/screen.h"
#include "tests/support/x_server.h"

struct _XDisplay;  // of the X library, whose names stay out of the tests

class XScreen : public TestScreen {
  public:
    // Starts the server and puts the client in front.
    XScreen();
    ~XScreen() override;

    std::string Typed(std::size_t count, int milliseconds) override;
    void BringToFront() override;
    void Focus(unsigned long window) override;
    bool HasFocus(unsigned long window) override;
    std::vector<ScreenWindow> Windows() override;
    std::vector<Accessible> Hear(const std::string& title = "") override;
    std::vector<std::string> TextsOf(const ScreenWindow& window) override;
    Picture Pointer() override;
    void Press(unsigned long symbol, bool control) override;
    void Click(int x, int y) override;
    bool KeysAreUp() override;

  private:
    XServer server_;
    AccessibilityBus voices_;
    _XDisplay* display_ = nullptr;
    unsigned long client_ = 0;
};
