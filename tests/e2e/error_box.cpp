#include "tests/e2e/error_box.h"

#include <X11/keysym.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/linux/kernel/terminal.h"
#include "platform/linux/windows/start_windows.h"
#include "platform/window.h"
#include "tests/e2e/program.h"
#include "tests/e2e/wine_screen.h"

namespace {

constexpr int ButtonRow = 50;  // pixels; its looks depend on the focus
constexpr std::chrono::milliseconds Step{50};

// The text's part of a box, once it is in its place, painted, and changes no more.
Picture TextOf(TestScreen& screen, unsigned long box) {
    Picture last;
    for (int tries = 0; tries < 100; ++tries) {
        Picture now;
        for (const ScreenWindow& window : screen.Windows()) {
            if (window.Id == box) {
                now =
                    screen.Capture(window.X, window.Y, window.Width, std::max(window.Height - ButtonRow, 1));
            }
        }
        const bool blank = std::all_of(now.Pixels.begin(), now.Pixels.end(),
                                       [&](unsigned pixel) { return pixel == now.Pixels.front(); });
        if (!blank && now == last) {
            return now;
        }
        last = std::move(now);
        std::this_thread::sleep_for(Step);
    }
    return {};
}

// The text's part of a box with this text, which covers the other box while it is there.
Picture ModelOf(TestScreen& screen, const ScreenWindow& box, const std::string& text) {
    const auto model = StartProgram(OwnProgram(), {ShowBoxRole, text}, {"QT_QPA_PLATFORM=xcb"});
    for (int tries = 0; tries < 200; ++tries) {
        for (const ScreenWindow& window : screen.Windows()) {
            if (window.Title == ErrorBoxTitle && window.Id != box.Id) {
                return TextOf(screen, window.Id);
            }
        }
        std::this_thread::sleep_for(Step);
    }
    return {};
}

}  // namespace

int ShowModelBox(const char* text) {
    layer::StartWindows();
    MessageBoxW(nullptr, reinterpret_cast<LPCWSTR>(layer::FromUtf8(text).c_str()),
                reinterpret_cast<LPCWSTR>(layer::FromUtf8(ErrorBoxTitle).c_str()), MB_OK);
    return 0;
}

bool ErrorBoxSays(TestScreen& screen, const std::string& text) {
    const auto box = screen.WaitForWindow(ErrorBoxTitle, 20000);
    if (!box) {
        return false;
    }
    if (OnWine()) {
        const auto shown = WineSession::Current().Ask("text " + std::to_string(box->Id));
        return shown == std::vector<std::string>{"text " + text};
    }
    // On a busy machine a box may show for a while what was there before it: then a second look helps.
    for (int looks = 0; looks < 3; ++looks) {
        const Picture shown = TextOf(screen, box->Id);
        if (!shown.Pixels.empty() && ModelOf(screen, *box, text) == shown) {
            return true;
        }
        std::this_thread::sleep_for(10 * Step);
    }
    return false;
}

void DismissErrorBox(TestScreen& screen) {
    if (const auto box = screen.WaitForWindow(ErrorBoxTitle)) {
        screen.Focus(box->Id);
        screen.Press(XK_Return);
    }
}
