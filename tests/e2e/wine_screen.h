// A Windows desktop under Wine, worked by the program vantrel-hands inside it.
#pragma once

#include <string_view>

#include "tests/e2e/screen.h"
#include "tests/support/child_process.h"
#include "tests/support/x_server.h"

// Wine with a prefix and a server of its own, for the whole life of the test program; the ports COM1 and COM2
// are those of the terminal folder that is in use.
class WineSession {
  public:
    static WineSession& Current();
    ~WineSession();
    WineSession(const WineSession&) = delete;
    WineSession& operator=(const WineSession&) = delete;

    // Tells the hands to do something; the lines of the answer.
    std::vector<std::string> Ask(const std::string& command);

  private:
    WineSession();

    std::string prefix_;
    XServer server_;
    std::unique_ptr<ChildProcess> wineServer_, hands_;
};

// Why a test (its name without its suite's) cannot run there; null when it can. Serial lines are
// pseudo-terminals everywhere: what only a real line has (modem lines, break) is in no end-to-end test.
const char* WhyNotOnWine(std::string_view test);
// The command that runs a Windows program of the project, and what it needs in its environment.
std::vector<std::string> WineCommand(const std::string& program);
std::string WineTerminal();

class WineScreen : public TestScreen {
  public:
    WineScreen();

    std::string Typed(std::size_t count, int milliseconds) override;
    void BringToFront() override;
    void Focus(unsigned long window) override;
    std::vector<ScreenWindow> Windows() override;
    std::vector<std::string> TextsOf(const ScreenWindow& window) override;
    int MainWidth() const override { return 240; }
    void Press(unsigned long symbol, bool control) override;
    void Click(int x, int y) override;
    bool HasFocus(unsigned long window) override;
    bool KeysAreUp() override;
};
