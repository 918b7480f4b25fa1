// The desktop of a test: windows, keys, taps, and a window in front that notes what is typed into it. There
// are two: a bare X server, and a Windows desktop.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/accessibility.h"

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
    TestScreen() = default;
    virtual ~TestScreen() = default;
    TestScreen(const TestScreen&) = delete;
    TestScreen& operator=(const TestScreen&) = delete;

    // Waits until the client has got that much text, Return as a line feed, and a little longer, in which
    // nothing more should come. Forgets it then.
    virtual std::string Typed(std::size_t count, int milliseconds = 5000) = 0;
    // Gives the client, or another window, the focus.
    virtual void BringToFront() = 0;
    virtual void Focus(unsigned long window) = 0;
    virtual bool HasFocus(unsigned long /*window*/) { return true; }

    // Windows that can be seen, the one below first.
    virtual std::vector<ScreenWindow> Windows() = 0;
    std::optional<ScreenWindow> Find(const std::string& title);
    std::optional<ScreenWindow> WaitForWindow(const std::string& title, int milliseconds = 10000);
    bool WaitUntilGone(const std::string& title, int milliseconds = 5000);
    // Waits until a window with the title is there and gets the keys.
    bool WaitForFocus(const std::string& title, int milliseconds = 10000);

    // What the windows, or those with the title, say to a screen reader. X only.
    virtual std::vector<Accessible> Hear(const std::string& /*title*/ = "") { return {}; }
    // The texts that a window shows, one after the other.
    virtual std::vector<std::string> TextsOf(const ScreenWindow& window) = 0;

    // The width of the main window, which has the settings' title and is smaller.
    virtual int MainWidth() const { return 300; }

    // A part of the screen; empty when there is none.
    static Picture Capture(int x, int y, int width, int height);
    // The mouse pointer as it looks now. X only.
    virtual Picture Pointer() { return {}; }
    // Writes the whole screen as a PPM file.
    void Save(const std::string& path);

    // A key by its X symbol; `control` holds Ctrl meanwhile.
    virtual void Press(unsigned long symbol, bool control = false) = 0;
    virtual void Click(int x, int y) = 0;
    // No key of the keyboard is down and no lock is on.
    virtual bool KeysAreUp() = 0;
};

// Whether the programs under test are the Windows ones, under Wine ($VANTREL_E2E=wine).
bool OnWine();
// The desktop for the programs under test; it is that of $DISPLAY from now on.
std::unique_ptr<TestScreen> MakeScreen();

inline constexpr const char* ErrorBoxTitle = "Error Msg";

// Waits for an error box and tells whether it says this.
bool ErrorBoxSays(TestScreen& screen, const std::string& text);
// Presses the box's button.
void DismissErrorBox(TestScreen& screen);
