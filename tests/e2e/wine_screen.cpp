#include "tests/e2e/wine_screen.h"

#include <X11/keysym.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <thread>

#include "tests/e2e/program.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds Quiet{150};  // in which nothing more is expected

constexpr const char* Wine = "/usr/lib/wine/wine64";
constexpr const char* Server = "/usr/lib/wine/wineserver64";

std::string TerminalFolder() {
    return std::getenv("VANTREL_TERMINAL");
}

// The notification area is at the taskbar's end. Its icons have no windows: the first one's place is looked
// at.
constexpr int IconX = 616, IconY = 457, IconSize = 26;

bool ShowsIcon() {
    const Picture place = TestScreen::Capture(IconX + 8, IconY + 8, 10, 10);
    return !place.Pixels.empty() && std::ranges::count(place.Pixels, place.Pixels.front()) < 90;
}

constexpr struct {
    std::string_view Test;
    const char* Reason;
} NotHere[] = {
    {"EveryCharacterIsTypedIntoATerminalProgram", "types into an X client: the keys go to Windows programs"},
    {"ChangesReachTheReaderTheFileAndTheNextScan/InATray", "taps an icon in an X notification area"},
    {"WithoutADisplayAFailureIsSaidAndEndsTheProgram", "a Windows session always has a screen"},
    {"WithItsDisplayAtTheSameInstant", "there the display is Wine's, which ends its programs"},
};

// What the windows of a terminal and the names that it shares carry.
std::string TerminalIdentity(const std::string& folder) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char letter : folder) {
        const char lower = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
        hash = (hash ^ static_cast<unsigned char>(lower)) * 0x100000001B3u;
        hash = hash * 0x100000001B3u;  // the high byte is zero
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

// The virtual key of an X symbol.
int VirtualKey(unsigned long symbol) {
    unsigned long key = symbol & 0xFF;  // Return, Escape, Tab and the space have the same number
    if (symbol >= XK_a && symbol <= XK_z) {
        key = symbol - XK_a + 'A';
    } else if (symbol >= XK_Home && symbol <= XK_Down) {
        key = symbol - XK_Home + 0x24;
    } else if (symbol == XK_End) {
        key = 0x23;
    }
    return static_cast<int>(key);
}

}  // namespace

WineSession& WineSession::Current() {
    static WineSession session;
    return session;
}

WineSession::WineSession() {
    namespace fs = std::filesystem;
    const fs::path home = fs::path(VANTREL_WINDOWS_PROGRAMS) / "../wine";
    prefix_ = fs::weakly_canonical(home / ("run-" + std::to_string(getpid())));
    setenv("WINEPREFIX", prefix_.c_str(), 1);
    // What goes wrong inside is said with a test that fails.
    setenv("WINEDEBUG", "fixme-all", 0);
    setenv("WINESERVER", Server, 1);
    // Neither downloads nor menu entries.
    setenv("WINEDLLOVERRIDES", "mscoree=;mshtml=;winemenubuilder.exe=", 1);
    // The prefix that was made once is shared, but for what a session changes.
    if (RunProgram("sh", {"-c", "cp -al \"$0\" \"$1\" && sed -i \"s|PORTS|$1/ports|\" \"$1/system.reg\"",
                          home / "prefix", prefix_}) != 0) {
        ADD_FAILURE() << "there is no Wine prefix in " << home << ": run ./test windows";
    }
    // All programs of the session end with their server, and that with the test, whatever becomes of it. What
    // the server says is a list of what programs left open.
    wineServer_ = StartProgram("sh", {"-c", "exec \"$0\" -f -p 2>/dev/null", Server});
    hands_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{Wine, std::string(VANTREL_WINDOWS_PROGRAMS) + "/vantrel-hands.exe"},
        std::vector<std::string>{});
    const auto ready = hands_->ReadLine(60000);
    EXPECT_TRUE(ready && ready->starts_with("ready")) << "Wine does not start";
}

WineSession::~WineSession() {
    hands_->WriteLine("quit");
    hands_->Wait(5000);
    RunProgram(Server, {"-k"});
    wineServer_->Wait(10000);
    std::error_code ignored;
    std::filesystem::remove_all(prefix_, ignored);
}

std::vector<std::string> WineSession::Ask(const std::string& command) {
    hands_->WriteLine(command);
    std::vector<std::string> lines;
    while (auto line = hands_->ReadLine(20000)) {
        if (*line == "ok") {
            return lines;
        }
        lines.push_back(*line);
    }
    ADD_FAILURE() << "the hands " << (hands_->Wait(100) ? "have ended" : "do not answer in 20 s") << ": "
                  << command;
    return {};
}

std::vector<std::string> WineCommand(const std::string& program) {
    WineSession::Current();
    const char* const installed = std::getenv("VANTREL_WINDOWS_INSTALLED");
    return {Wine, std::string(installed != nullptr ? installed : VANTREL_WINDOWS_PROGRAMS) + "/" + program +
                      ".exe"};
}

const char* WhyNotOnWine(std::string_view test) {
    for (const auto& entry : NotHere) {
        if (entry.Test == test) {
            return entry.Reason;
        }
    }
    return nullptr;
}

std::string WineTerminal() {
    std::string folder = "Z:" + TerminalFolder();
    std::replace(folder.begin(), folder.end(), '/', '\\');
    return folder;
}

WineScreen::WineScreen() {
    WineSession& session = WineSession::Current();
    const std::string ports = std::string(std::getenv("WINEPREFIX")) + "/ports";
    unlink(ports.c_str());
    EXPECT_EQ(symlink(TerminalFolder().c_str(), ports.c_str()), 0);
    session.Ask("terminal " + TerminalIdentity(WineTerminal()));
    session.Ask("typed");
    BringToFront();
}

std::string WineScreen::Typed(std::size_t count, int milliseconds) {
    const auto until = Clock::now() + std::chrono::milliseconds(milliseconds);
    auto last = Clock::now();
    std::string text;
    for (;;) {
        const auto lines = WineSession::Current().Ask("typed");
        const std::string digits = lines.empty() ? "" : lines.back().substr(std::string("typed ").size());
        for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
            text += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
            last = Clock::now();
        }
        if (text.size() >= count ? Clock::now() >= last + Quiet : Clock::now() >= until) {
            return text;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void WineScreen::BringToFront() {
    WineSession::Current().Ask("front");
}

void WineScreen::Focus(unsigned long window) {
    WineSession::Current().Ask("front " + std::to_string(window));
}

std::vector<ScreenWindow> WineScreen::Windows() {
    std::vector<ScreenWindow> found;
    for (const std::string& line : WineSession::Current().Ask("windows")) {
        std::istringstream fields(line);
        std::string word;
        ScreenWindow window;
        fields >> word >> window.Id >> window.X >> window.Y >> window.Width >> window.Height;
        fields.get();
        std::getline(fields, window.Title);
        found.push_back(window);
    }
    if (ShowsIcon()) {
        found.push_back({0, IconX, IconY, IconSize, IconSize, "Notification icon"});
    }
    return found;
}

std::vector<std::string> WineScreen::TextsOf(const ScreenWindow& window) {
    std::vector<std::string> texts;
    for (const std::string& line : WineSession::Current().Ask("text " + std::to_string(window.Id))) {
        texts.push_back(line.substr(std::string("text ").size()));
    }
    return texts;
}

void WineScreen::Press(unsigned long symbol, bool control) {
    WineSession::Current().Ask(std::string("press ") + (control ? "17 " : "") +
                               std::to_string(VirtualKey(symbol)));
}

void WineScreen::Click(int x, int y) {
    WineSession::Current().Ask("click " + std::to_string(x) + " " + std::to_string(y));
}

bool WineScreen::HasFocus(unsigned long window) {
    return WineSession::Current().Ask("foreground") ==
           std::vector<std::string>{"foreground " + std::to_string(window)};
}

bool WineScreen::KeysAreUp() {
    return WineSession::Current().Ask("keys") == std::vector<std::string>{"keys up"};
}
